#include <qpdf/QPDF.hh>
#include <qpdf/QUtil.hh>

#include "openhost/pdf/Encryption.h"
#include "openhost/pdf/KeysRevision6.h"
#include "openhost/pdf/Passwords.h"

namespace openhost {
namespace {

struct PasswordPair {
    std::string user, owner;
};

/// Version, revision, method and key length by the rules beside StandardSecurity.
std::optional<SecurityInfo> KindOf(const StandardSecurity& request)
{
    SecurityInfo kind{.encrypted = true};
    const auto as = [&kind](int version, int revision, int method, int keyBytes) {
        kind.version = version;
        kind.revision = revision;
        kind.method = method;
        kind.keyLengthBytes = keyBytes;
        return kind;
    };
    if (request.revision == 5 || request.revision == 6 || request.method == 7 || request.keyLengthBytes == 32) {
        return as(5, 6, 7, 32);
    }
    if (request.method == 5 || request.method == 6) return as(4, 4, 6, 16);
    if (request.method == 2) return as(2, 3, 2, 16);
    if (request.method == 0 && request.keyLengthBytes == 16) return as(4, 4, 6, 16);
    return std::nullopt;
}

/// The bits that clients decide are kept; those that the format reserves are 0 for the lowest two and 1 elsewhere.
/// Revision 6 knows no bar to accessibility: its bit is always set.
std::uint32_t StoredPermissions(std::uint32_t asked, int revision)
{
    using namespace pdfright;
    constexpr std::uint32_t kAsked =
        kPrint | kChange | kCopy | kAnnotate | kFillForms | kAccessibility | kAssemble | kPrintHigh;
    const std::uint32_t stored = (asked & kAsked) | (0xFFFFFFFC & ~kAsked);
    return revision >= 6 ? stored | kAccessibility : stored;
}

std::string Prepared(bool present, const std::string& utf8, const char* which, int revision, const std::string& file)
{
    if (!present) return {};
    if (auto prepared = PreparePassword(utf8, revision)) return *prepared;
    throw CPdfError(PdfProblem::PasswordNotExpressible, file,
                    std::string("the ") + which + " password has characters that this encryption cannot express: " +
                        PasswordObjection(utf8, revision));
}

std::string DictionarySource(const SecurityInfo& info, const std::string& keyEntries)
{
    const bool filtered = info.version >= 4;
    std::string text = "<</Filter/Standard/V " + std::to_string(info.version) + "/R " +
                       std::to_string(info.revision) + "/Length " + std::to_string(info.keyLengthBytes * 8) + "/P " +
                       std::to_string(static_cast<std::int32_t>(info.permissions)) + keyEntries;
    if (filtered) {
        const std::string filter = info.version == 4 ? "AESV2" : "AESV3";
        text += "/CF<</StdCF<</AuthEvent/DocOpen/CFM/" + filter + "/Length " + std::to_string(info.keyLengthBytes) +
                ">>>>/StmF/StdCF/StrF/StdCF";
        if (!info.encryptMetadata) text += "/EncryptMetadata false";
    }
    return text + ">>";
}

std::string Entry(const char* key, const std::string& bytes) { return key + ('<' + QUtil::hex_encode(bytes)) + '>'; }

/// Makes the 256-bit keys.
void MakeKeys6(EncryptionPlan& plan, const PasswordPair& passwords)
{
    const SecurityInfo& info = plan.record.info;
    const KeysRevision6 keys =
        MakeKeysRevision6(passwords.user, passwords.owner, info.permissions, info.encryptMetadata);
    plan.fileKey = keys.fileKey;
    plan.record.dictionary =
        DictionarySource(info, Entry("/O", keys.o) + Entry("/U", keys.u) + Entry("/OE", keys.oe) +
                                   Entry("/UE", keys.ue) + Entry("/Perms", keys.perms));
}

/// Makes the keys of revisions 3 and 4.
void MakeKeys4(EncryptionPlan& plan, const PasswordPair& passwords)
{
    const SecurityInfo& info = plan.record.info;
    const auto permissions = static_cast<std::int32_t>(info.permissions);
    std::string o, u;
    QPDF::compute_encryption_O_U(passwords.user.c_str(), passwords.owner.c_str(), info.version, info.revision,
                                 info.keyLengthBytes, permissions, info.encryptMetadata, plan.record.id, o, u);
    const QPDF::EncryptionData data(info.version, info.revision, info.keyLengthBytes, permissions, o, u, "", "", "",
                                    plan.record.id, info.encryptMetadata);
    plan.fileKey = QPDF::compute_encryption_key(passwords.user, data);
    plan.record.dictionary = DictionarySource(info, Entry("/O", o) + Entry("/U", u));
}

}  // namespace

EncryptionPlan PlanEncryption(const StandardSecurity& request, const std::string& id, const std::string& file)
{
    const auto kind = KindOf(request);
    if (!kind) throw CPdfError(PdfProblem::BadSecuritySettings, file, "this kind of encryption is not offered");

    EncryptionPlan plan;
    SecurityInfo& info = plan.record.info = *kind;
    info.permissions = StoredPermissions(request.permissions, info.revision);
    info.encryptMetadata = request.encryptMetadata || info.version < 4;
    plan.record.id = id;

    PasswordPair passwords{Prepared(request.hasUser, request.userPasswordUtf8, "open", info.revision, file),
                           Prepared(request.hasOwner, request.ownerPasswordUtf8, "permissions", info.revision, file)};
    info.hasUser = !passwords.user.empty();
    info.hasOwner = !passwords.owner.empty();
    if (passwords.owner.empty()) passwords.owner = info.hasUser ? passwords.user : RandomPassword();

    info.revision >= 5 ? MakeKeys6(plan, passwords) : MakeKeys4(plan, passwords);
    plan.userPasswordBytes = passwords.user;
    plan.ownerPasswordBytes = passwords.owner;
    return plan;
}

}  // namespace openhost
