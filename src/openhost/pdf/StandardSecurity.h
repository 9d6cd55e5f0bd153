#ifndef FERRULE_OPENHOST_PDF_STANDARD_SECURITY_H
#define FERRULE_OPENHOST_PDF_STANDARD_SECURITY_H

#include <cstdint>
#include <string>

namespace openhost {

/// The permission bits of an encrypted document; they are also those of the file format.
namespace pdfright {
constexpr std::uint32_t kPrint = 0x4;
constexpr std::uint32_t kChange = 0x8;
constexpr std::uint32_t kCopy = 0x10;
constexpr std::uint32_t kAnnotate = 0x20;
constexpr std::uint32_t kFillForms = 0x100;
constexpr std::uint32_t kAccessibility = 0x200;
constexpr std::uint32_t kAssemble = 0x400;
constexpr std::uint32_t kPrintHigh = 0x800;
constexpr std::uint32_t kAll = 0xFFFFFFFF;
}  // namespace pdfright

/// Password security as a client asks for it; what is written follows these rules, the first that fits:
///
/// revision 5 or 6, method 7 or a key of 32 bytes   AES, 256 bits, revision 6 (5 is never written)
/// method 6 or 5                                    AES, 128 bits, revision 4
/// method 2                                         RC4, 128 bits, revision 3
/// method 0 with a key of 16 bytes                  AES, 128 bits, revision 4
/// anything else                                    refused: BadSecuritySettings
struct StandardSecurity {
    bool hasUser = false;   ///< a password to open the document
    bool hasOwner = false;  ///< a password to change its permissions
    std::string userPasswordUtf8;
    std::string ownerPasswordUtf8;
    std::uint32_t permissions = pdfright::kAll;  ///< bits of pdfright; reserved ones are set as the format demands
    int keyLengthBytes = 16;
    int revision = 0;
    int method = 0;               ///< 0 the host's choice, 2 RC4, 5 and 6 AES with 128 bits, 7 AES with 256 bits
    bool encryptMetadata = true;  ///< RC4 encrypts them in any case
};

/// The security that a document has now, or will have after its next save.
struct SecurityInfo {
    bool encrypted = false;
    int version = 0;   ///< /V
    int revision = 0;  ///< /R
    int method = 0;    ///< as in StandardSecurity
    int keyLengthBytes = 0;
    std::uint32_t permissions = pdfright::kAll;
    bool hasUser = false;  ///< opening needs a password (false also when it is not known)
    bool hasOwner = false;
    bool encryptMetadata = true;
};

}  // namespace openhost

#endif
