#pragma once

#include <cstdint>
#include <string>

namespace openhost {

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
