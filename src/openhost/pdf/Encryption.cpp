#include "openhost/pdf/Encryption.h"

#include <qpdf/BufferInputSource.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QUtil.hh>

#include "openhost/pdf/Passwords.h"

namespace openhost {
namespace {

std::string HexString(const std::string& bytes) { return '<' + QUtil::hex_encode(bytes) + '>'; }

/// The smallest file that carries an encryption dictionary.
std::string StubFile(const EncryptionRecord& record)
{
    std::string text = "%PDF-1.7\n";
    const std::size_t catalogue = text.size();
    text += "1 0 obj\n<</Type/Catalog/Pages 2 0 R>>\nendobj\n";
    const std::size_t pages = text.size();
    text += "2 0 obj\n<</Type/Pages/Kids[]/Count 0>>\nendobj\n";
    const std::size_t table = text.size();
    const auto entry = [](std::size_t offset) {
        return QUtil::int_to_string(static_cast<long long>(offset), 10) + " 00000 n \n";
    };
    text += "xref\n0 3\n0000000000 65535 f \n" + entry(catalogue) + entry(pages);
    const std::string id = HexString(record.id);
    text += "trailer\n<</Size 3/Root 1 0 R/ID[" + id + id + "]/Encrypt " + record.dictionary + ">>\n";
    return text + "startxref\n" + std::to_string(table) + "\n%%EOF\n";
}

std::shared_ptr<InputSource> StubSource(const EncryptionRecord& record)
{
    return std::make_shared<BufferInputSource>("encryption", StubFile(record));
}

int MethodOf(int version, QPDF::encryption_method_e streams)
{
    if (version >= 5 || streams == QPDF::e_aesv3) return 7;
    return version == 4 && streams == QPDF::e_aes ? 6 : 2;
}

int KeyBytes(int version, QPDFObjectHandle dictionary)
{
    if (version >= 4) return version == 4 ? 16 : 32;
    QPDFObjectHandle length = dictionary.getKey("/Length");
    return version > 1 && length.isInteger() ? length.getIntValueAsInt() / 8 : 5;
}

}  // namespace

std::unique_ptr<QPDF> NewLibraryDocument(bool repair)
{
    auto document = std::make_unique<QPDF>();
    document->setSuppressWarnings(true);
    document->setAttemptRecovery(repair);
    return document;
}

std::optional<EncryptionRecord> ReadEncryption(QPDF& document)
{
    QPDFObjectHandle trailer = document.getTrailer();
    QPDFObjectHandle dictionary = trailer.getKey("/Encrypt");
    if (!dictionary.isDictionary()) return std::nullopt;
    int revision = 0, permissions = 0, version = 0;
    QPDF::encryption_method_e streams{}, strings{}, files{};
    if (!document.isEncrypted(revision, permissions, version, streams, strings, files)) return std::nullopt;

    EncryptionRecord record;
    record.info = {.encrypted = true,
                   .version = version,
                   .revision = revision,
                   .method = MethodOf(version, streams),
                   .keyLengthBytes = KeyBytes(version, dictionary),
                   .permissions = static_cast<std::uint32_t>(permissions)};
    QPDFObjectHandle metadata = dictionary.getKey("/EncryptMetadata");
    record.info.encryptMetadata = !metadata.isBool() || metadata.getBoolValue();
    QPDFObjectHandle id = trailer.getKey("/ID");
    if (id.isArray() && id.getArrayNItems() > 0 && id.getArrayItem(0).isString()) {
        record.id = id.getArrayItem(0).getStringValue();
    }
    QPDFObjectHandle direct = dictionary.unsafeShallowCopy();
    direct.makeDirect();
    record.dictionary = direct.unparse();
    return record;
}

std::optional<PasswordMatch> TryPassword(const EncryptionRecord& record, const std::string& passwordBytes)
{
    try {
        const auto stub = NewLibraryDocument(false);
        stub->processInputSource(StubSource(record), passwordBytes.c_str());
        return PasswordMatch{.openedWith = stub->ownerPasswordMatched() ? OpenedWith::Owner : OpenedWith::User,
                             .passwordBytes = passwordBytes,
                             .fileKey = stub->getEncryptionKey()};
    } catch (const QPDFExc& error) {
        if (error.getErrorCode() == qpdf_e_password) return std::nullopt;
        throw;
    }
}

std::optional<PasswordMatch> TryPasswordForms(const EncryptionRecord& record, std::string_view utf8,
                                              WantedRights wanted)
{
    std::optional<PasswordMatch> best;
    for (const std::string& form : PasswordForms(utf8, record.info.revision)) {
        auto match = TryPassword(record, form);
        if (!match) continue;
        if (match->openedWith == OpenedWith::Owner || wanted == WantedRights::Open) return match;
        if (!best) best = std::move(match);
    }
    return best;
}

std::string UnlockingText(QPDF& document, const EncryptionRecord& record, const std::string& passwordBytes,
                          const std::string& fileKey)
{
    const bool byKey = record.info.version >= 5;
    document.setPasswordIsHexKey(byKey);
    return byKey ? QUtil::hex_encode(fileKey) : passwordBytes;
}

std::unique_ptr<QPDF> EncryptionDonor(const EncryptionPlan& plan)
{
    auto donor = NewLibraryDocument(false);
    const std::string unlocking = UnlockingText(*donor, plan.record, plan.userPasswordBytes, plan.fileKey);
    donor->processInputSource(StubSource(plan.record), unlocking.c_str());
    return donor;
}

std::string IdentifierOf(QPDF& document)
{
    QPDFObjectHandle id = document.getTrailer().getKey("/ID");
    if (id.isArray() && id.getArrayNItems() > 0 && id.getArrayItem(0).isString()) {
        std::string first = id.getArrayItem(0).getStringValue();
        if (!first.empty()) return first;
    }
    std::string random(16, '\0');
    QUtil::initializeWithRandomBytes(reinterpret_cast<unsigned char*>(random.data()), random.size());
    return random;
}

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
