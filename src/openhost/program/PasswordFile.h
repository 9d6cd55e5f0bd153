#ifndef FERRULE_OPENHOST_PROGRAM_PASSWORD_FILE_H
#define FERRULE_OPENHOST_PROGRAM_PASSWORD_FILE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace openhost {

/// One candidate for each line, UTF-8. Only the line end is cut (line feed, or carriage return and line feed): blanks
/// at either end belong to the password. Empty lines are no candidates; a byte order mark in front is ignored.
std::vector<std::string> PasswordsFromText(std::string_view text);

/// Nothing when the file cannot be read.
std::optional<std::vector<std::string>> ReadPasswordFile(const std::string& path);

}  // namespace openhost

#endif
