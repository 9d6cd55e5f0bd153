#include "openhost/pdf/ReadBack.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <set>
#include <unordered_set>

#include <qpdf/Buffer.hh>
#include <qpdf/InputSource.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>

#include "openhost/pdf/DocumentLoss.h"
#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/PageTree.h"

namespace openhost {
namespace {

std::string NumberedPage(std::size_t page0) { return "page " + std::to_string(page0 + 1); }

// ---- encryption

/// One entry of two encryption dictionaries, brought into one form: numbers may be written with and without a sign.
bool SameEntry(QPDFObjectHandle one, QPDFObjectHandle other)
{
    if (one.isString() && other.isString()) return one.getStringValue() == other.getStringValue();
    if (one.isInteger() && other.isInteger())
        return static_cast<std::int32_t>(one.getIntValue()) == static_cast<std::int32_t>(other.getIntValue());
    return one.unparse() == other.unparse();
}

/// Empty when both lead from the same passwords to the same key.
std::string EncryptionDifference(const EncryptionRecord& wanted, const EncryptionRecord& found)
{
    if (found.id != wanted.id && wanted.info.version < 5) return "the encryption has another identifier";
    if (found.info.encryptMetadata != wanted.info.encryptMetadata) return "the metadata are encrypted otherwise";
    QPDFObjectHandle one = QPDFObjectHandle::parse(wanted.dictionary);
    QPDFObjectHandle other = QPDFObjectHandle::parse(found.dictionary);
    for (const char* key : {"/V", "/R", "/O", "/U", "/OE", "/UE", "/P", "/Perms"})
        if (!SameEntry(one.getKey(key), other.getKey(key)))
            return std::string("the encryption has another ") + key + " than was computed";
    return {};
}

std::string OpensBy(const std::string& path, const std::string& passwordBytes, const char* which, bool asOwner)
{
    const auto library = NewLibraryDocument(false);
    library->processInputSource(OpenSource(path), passwordBytes.c_str());
    if (!library->isEncrypted()) return "the file is not encrypted";
    if (asOwner && !library->ownerPasswordMatched())
        return std::string("the ") + which + " password does not give the owner's rights";
    return {};
}

/// One request differs from another by what was asked for; documents of one request differ by random numbers alone.
std::string RequestKey(const WrittenEncryption& encryption)
{
    const SecurityInfo& info = encryption.record.info;
    std::string key;
    for (const int number : {info.version, info.revision, info.method, info.keyLengthBytes,
                             static_cast<int>(info.permissions), info.encryptMetadata ? 1 : 0})
        key += std::to_string(number) + ' ';
    return key + std::to_string(encryption.userPasswordBytes.size()) + ' ' + encryption.userPasswordBytes +
           *encryption.ownerPasswordBytes;
}

/// Deriving a key takes as long as the rest of a small document; one true opening proves the request.
std::string PasswordProblem(const std::string& path, const WrittenEncryption& encryption)
{
    static std::unordered_set<std::size_t> proven;  // hashes, so that no password stays in memory for it
    const std::size_t request = std::hash<std::string>()(RequestKey(encryption));
    if (proven.contains(request)) return {};
    std::string problem = OpensBy(path, encryption.userPasswordBytes, "open", false);
    if (problem.empty()) problem = OpensBy(path, *encryption.ownerPasswordBytes, "permissions", true);
    if (problem.empty()) proven.insert(request);
    return problem;
}

std::string EncryptionProblem(QPDF& written, const std::optional<WrittenEncryption>& wanted)
{
    const auto found = ReadEncryption(written);
    if (!wanted) return found ? "the file is encrypted" : "";
    if (!found) return "the file is not encrypted";
    // Old encryption may come out with a stronger method than it had.
    const bool isNew = wanted->ownerPasswordBytes.has_value();
    if (isNew && found->info.method != wanted->record.info.method) return "the encryption uses another method";
    return EncryptionDifference(wanted->record, *found);
}

// ---- pages

std::vector<QPDFObjectHandle> ContentStreams(QPDFObjectHandle page)
{
    std::vector<QPDFObjectHandle> streams;
    QPDFObjectHandle contents = page.getKey("/Contents");
    if (contents.isStream()) streams.push_back(contents);
    if (contents.isArray())
        for (QPDFObjectHandle part : contents.aitems())
            if (part.isStream()) streams.push_back(part);
    return streams;
}

/// Null when they cannot be read.
std::shared_ptr<Buffer> RawBytes(QPDFObjectHandle stream)
{
    try {
        return stream.getRawStreamData();
    } catch (const std::runtime_error&) {
        return nullptr;
    }
}

/// The writer copies streams as they are, so their bytes before encryption are equal.
bool CameBack(QPDFObjectHandle original, QPDFObjectHandle written)
{
    const auto wanted = RawBytes(original), found = RawBytes(written);
    if (!wanted) return true;  // nobody could read it before
    if (!found || found->getSize() != wanted->getSize()) return false;
    return wanted->getSize() == 0 || std::memcmp(found->getBuffer(), wanted->getBuffer(), wanted->getSize()) == 0;
}

/// Compares pages; a stream that many pages share is compared once.
class CPageComparison {
public:
    std::string Problem(QPDFObjectHandle original, QPDFObjectHandle written)
    {
        if (!written.isDictionary() || (original.isDictionaryOfType("/Page") && !written.isDictionaryOfType("/Page")))
            return "is missing";
        const auto wanted = ContentStreams(original), found = ContentStreams(written);
        if (wanted.size() != found.size()) return "has lost its content";
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            if (!m_compared.insert(found[i].getObjGen()).second) continue;
            if (!CameBack(wanted[i], found[i])) return "has another content";
        }
        return {};
    }

private:
    std::set<QPDFObjGen> m_compared;
};

std::string PagesProblem(QPDF& written, QPDF& original)
{
    const auto wanted = PagesOf(original), found = PagesOf(written);
    if (wanted.size() != found.size())
        return std::to_string(found.size()) + " of " + std::to_string(wanted.size()) + " pages came back";
    CPageComparison comparison;
    for (std::size_t page = 0; page < wanted.size(); ++page) {
        const std::string problem = comparison.Problem(wanted[page], found[page]);
        if (!problem.empty()) return NumberedPage(page) + ' ' + problem;
    }
    return {};
}

// ---- complaints

/// What was odd before is written as odd, as with the entries of an encryption.
std::string NewComplaint(QPDF& written, const std::vector<std::string>& known)
{
    for (const QPDFExc& complaint : written.getWarnings()) {
        std::string detail = complaint.getMessageDetail();
        const bool isOld = std::any_of(known.begin(), known.end(), [&](const std::string& line) {
            return line.find(detail) != std::string::npos;
        });
        if (!isOld) return detail;
    }
    return {};
}

std::string Compared(const std::string& path, QPDF& original, const std::vector<std::string>& complaints,
                     const std::optional<WrittenEncryption>& encryption)
{
    const auto source = OpenSource(path);
    const auto written = NewLibraryDocument(false);
    std::string unlocking;
    if (encryption)
        unlocking = UnlockingText(*written, encryption->record, encryption->userPasswordBytes, encryption->fileKey);
    written->processInputSource(source, unlocking.c_str());
    if (const auto misplaced = MisplacedObjects(*written, *source); !misplaced.empty())
        return "object " + std::to_string(misplaced.front().getObj()) + " is not where the file says";
    std::string problem = EncryptionProblem(*written, encryption);
    if (problem.empty()) problem = PagesProblem(*written, original);
    if (problem.empty()) problem = NewComplaint(*written, complaints);
    if (problem.empty() && encryption && encryption->ownerPasswordBytes) problem = PasswordProblem(path, *encryption);
    return problem;
}

}  // namespace

std::string ReadBackProblem(const std::string& path, QPDF& original, const std::vector<std::string>& complaints,
                            const std::optional<WrittenEncryption>& encryption)
{
    try {
        return Compared(path, original, complaints, encryption);
    } catch (const QPDFExc& error) {
        return error.getMessageDetail();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace openhost
