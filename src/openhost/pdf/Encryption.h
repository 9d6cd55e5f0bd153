#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "openhost/pdf/PdfDocument.h"

namespace openhost {

/// What a file's trailer says about its encryption: enough to test passwords and to encrypt another file alike,
/// without the file.
struct EncryptionRecord {
    std::string dictionary;  ///< the encryption dictionary as PDF source, nothing indirect in it
    std::string id;          ///< first half of the file's identifier
    SecurityInfo info;       ///< without hasUser and hasOwner
};

struct PasswordMatch {
    OpenedWith openedWith = OpenedWith::None;
    std::string passwordBytes;
    std::string fileKey;
};

/// Makes a document about to be read accept the password that is known to fit. With 256 bits the file key takes its
/// place, which saves a slow derivation; with less the library cannot write such a file again without the password.
/// Answers what to hand to the library as password.
std::string UnlockingText(QPDF& document, const EncryptionRecord& record, const std::string& passwordBytes,
                          const std::string& fileKey);

/// Encryption ready to be written.
struct EncryptionPlan {
    EncryptionRecord record;
    std::string fileKey;
    std::string userPasswordBytes;
    std::string ownerPasswordBytes;
};

/// Reads the record from a document, locked ones included; nothing when it is not encrypted by passwords.
std::optional<EncryptionRecord> ReadEncryption(QPDF& document);

/// Tries one byte string. Fails: CPdfError is not thrown; library errors are.
std::optional<PasswordMatch> TryPassword(const EncryptionRecord& record, const std::string& passwordBytes);

/// Tries a typed password in all its forms; the first that gives `wanted`, else the best.
std::optional<PasswordMatch> TryPasswordForms(const EncryptionRecord& record, std::string_view utf8,
                                              WantedRights wanted);

/// Turns a request into what a file of identifier `id` gets. An empty permissions password is replaced by the open
/// password, or by a random one, so that it never opens the file to anyone.
/// Fails: CPdfError BadSecuritySettings, PasswordNotExpressible, about `file`.
EncryptionPlan PlanEncryption(const StandardSecurity& request, const std::string& id, const std::string& file);

/// A document without pages that is encrypted as planned; a writer can copy its encryption.
std::unique_ptr<QPDF> EncryptionDonor(const EncryptionPlan& plan);

/// First half of the document's identifier, a random one when it has none.
std::string IdentifierOf(QPDF& document);

/// A library object that keeps quiet.
std::unique_ptr<QPDF> NewLibraryDocument(bool repair);

}  // namespace openhost
