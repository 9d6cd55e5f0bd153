// Letter case and order of file names in any language, the same on every system.
#pragma once

#include <string>
#include <string_view>

/// The name with its capitals in lower case. Bytes that are no UTF-8 leave the name to ASCII rules.
[[nodiscard]] std::string LowerCasedName(std::string_view name);

/// The reverse.
[[nodiscard]] std::string UpperCasedName(std::string_view name);

/// The order in which folders are listed: by upper-cased characters, where a byte that is part of none stands for
/// itself, then by bytes. Nothing is kept for it: a folder may hold a million names.
[[nodiscard]] bool NameComesBefore(std::string_view a, std::string_view b);
