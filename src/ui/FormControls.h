#pragma once

#include <functional>
#include <string>

#include "ui/Form.h"

// Ways through the controls of a form, for those who show forms.

/// Every control, those inside of others behind the one that holds them; the buttons last.
void ForEachControl(const DialogForm& form, const std::function<void(const FormControl&)>& visit);

/// The control with this id, or the button with this label; null when there is none.
[[nodiscard]] const FormControl* FindControl(const DialogForm& form, const std::string& id);

/// What stands in, on or above the control, without the marks of letters. Empty when nothing does.
[[nodiscard]] std::string LabelOf(const FormControl& control);

/// The label as it is read, without its "&"; two of them are one.
[[nodiscard]] std::string WithoutMnemonic(const std::string& label);

[[nodiscard]] bool IsEnabled(const FormControl& control);
[[nodiscard]] bool IsShown(const FormControl& control);

/// Presses the button for Escape and the closing of the window: the one with that role, else nothing happens but that
/// the form is cancelled.
[[nodiscard]] FormAnswer CancelForm(const DialogForm& form);
