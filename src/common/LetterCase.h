// Letter case of file names in any language.
#pragma once

#include <string>
#include <string_view>

/// The name with Latin, Greek, Cyrillic and Armenian capitals in lower case, whatever the system's locale is. Bytes
/// that are no UTF-8 leave the name to ASCII rules.
[[nodiscard]] std::string LowerCasedName(std::string_view name);

/// The reverse.
[[nodiscard]] std::string UpperCasedName(std::string_view name);
