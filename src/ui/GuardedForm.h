#pragma once

#include <exception>

#include "ui/Form.h"

/// The same form with functions that throw nothing: the first exception is kept in `caught`, which lives longer, and
/// then all of them do nothing and the form ends as cancelled.
[[nodiscard]] DialogForm GuardedForm(const DialogForm& form, std::exception_ptr& caught);
