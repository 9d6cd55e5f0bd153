// The last error text of each command: the text of its last exception or report. The host keeps none.
#pragma once

#include "hostapi/HostTypes.h"

#include <string>

void RememberCommandError(AVCommand command, const std::string& text);

/// Empty when there is none; stays until forgotten.
[[nodiscard]] std::string CommandError(AVCommand command);

/// The same, and forgets it.
[[nodiscard]] std::string TakeCommandError(AVCommand command);
void ForgetCommandError(AVCommand command);
