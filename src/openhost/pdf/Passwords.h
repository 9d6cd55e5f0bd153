// Passwords as each revision of encryption takes them, and the keys that they guard.
#pragma once

#include <cstdint>
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

/// What an encryption dictionary of revision 6 holds, and the key that it guards. All are bytes.
struct KeysRevision6 {
    std::string fileKey;
    std::string o, u, oe, ue, perms;
};

/// Makes a new random file key and guards it by both passwords, which are prepared UTF-8 (see PreparePassword).
/// Nearly all the time that protecting a small document takes is spent here: the hashes of this revision are slow on
/// purpose. Fails: std::runtime_error when the cryptographic library does.
KeysRevision6 MakeKeysRevision6(const std::string& userPassword, const std::string& ownerPassword,
                                std::uint32_t permissions, bool encryptMetadata);

}  // namespace openhost
