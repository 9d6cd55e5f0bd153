// Which parameters of steps are passwords.
#pragma once

#include "hostcalls/Cab.h"

#include <string>
#include <vector>

/// What is shown in place of a password.
inline constexpr char kMaskedPassword[] = "********";

/// Whether the entry under these keys, from the top of a step's parameters, would be a password if it is a text.
[[nodiscard]] bool IsPasswordEntry(const std::string& handler, const std::vector<std::string>& keys);

/// Whether any parameter of the step is a password that is not empty. Throws CHostException.
[[nodiscard]] bool HoldsPassword(const std::string& handler, CCabView parameters);
