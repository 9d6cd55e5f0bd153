#pragma once

#include <string_view>

// The order in which folders are listed: the same on every system and in every language. Not for callers outside
// this folder.
namespace platform {

/// The upper-case form of a character, itself when there is none: Unicode's simple mapping.
char32_t UpperCased(char32_t character);

/// Takes the next character from UTF-8 text, in upper case; a byte that is part of none stands for itself.
char32_t NextUpperCased(std::string_view& rest);

/// By upper-cased characters, then by bytes. Nothing is kept for it: a folder may hold a million names.
bool NameComesBefore(std::string_view a, std::string_view b);

}  // namespace platform
