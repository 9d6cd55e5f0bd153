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

}  // namespace openhost
