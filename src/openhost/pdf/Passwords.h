#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace openhost {

/// A password in the form that encryption of this revision stores: PDFDocEncoding cut to 32 bytes up to revision 4,
/// SASLprep and UTF-8 cut to 127 bytes from 5 on. Nothing when the revision cannot express it, also when a password
/// that is not empty would prepare to an empty one.
std::optional<std::string> PreparePassword(std::string_view utf8, int revision);

/// Why PreparePassword has no answer and what to do: half a sentence that never holds a part of the password.
std::string PasswordObjection(std::string_view utf8, int revision);

/// The byte strings worth trying for a password that a user typed, likeliest first, each once: programs that encrypt
/// do not all prepare alike.
std::vector<std::string> PasswordForms(std::string_view utf8, int revision);

/// 32 printable characters that nobody knows.
std::string RandomPassword();

}  // namespace openhost
