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
#include <qpdf/QPDFXRefEntry.hh>

#include "openhost/pdf/DocumentLoss.h"
#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/PageTree.h"
#include "openhost/pdf/Xmp.h"

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

std::string AsItIs(const std::string& complaint) { return complaint; }

/// An odd number of objects is another odd number with one object more.
std::string WithoutNumbers(const std::string& complaint)
{
    std::string text = complaint;
    std::erase_if(text, [](char c) { return c >= '0' && c <= '9'; });
    return text;
}

/// What was odd before is written as odd, as with the entries of an encryption.
/// `form` brings two wordings of one complaint together.
std::string NewComplaint(QPDF& written, const std::vector<std::string>& known,
                         std::string (*form)(const std::string&))
{
    for (const QPDFExc& complaint : written.getWarnings()) {
        std::string detail = complaint.getMessageDetail();
        const bool isOld = std::any_of(known.begin(), known.end(), [&](const std::string& line) {
            return form(line).find(form(detail)) != std::string::npos;
        });
        if (!isOld) return detail;
    }
    return {};
}

std::unique_ptr<QPDF> Opened(const std::shared_ptr<InputSource>& source,
                             const std::optional<WrittenEncryption>& encryption)
{
    auto written = NewLibraryDocument(false);
    std::string unlocking;
    if (encryption)
        unlocking = UnlockingText(*written, encryption->record, encryption->userPasswordBytes, encryption->fileKey);
    written->processInputSource(source, unlocking.c_str());
    return written;
}

std::string Compared(const std::string& path, QPDF& original, const std::vector<std::string>& complaints,
                     const std::optional<WrittenEncryption>& encryption)
{
    const auto source = OpenSource(path);
    const auto written = Opened(source, encryption);
    if (const auto misplaced = MisplacedObjects(*written, *source); !misplaced.empty())
        return "object " + std::to_string(misplaced.front().getObj()) + " is not where the file says";
    std::string problem = EncryptionProblem(*written, encryption);
    if (problem.empty()) problem = PagesProblem(*written, original);
    if (problem.empty()) problem = NewComplaint(*written, complaints, &AsItIs);
    if (problem.empty() && encryption && encryption->ownerPasswordBytes) problem = PasswordProblem(path, *encryption);
    return problem;
}

// ---- appended parts

/// `length` bytes of `source` stand at the beginning of `written`, and `rest` behind them.
bool ContinuesWith(InputSource& written, InputSource& source, qpdf_offset_t length, const std::string& rest)
{
    constexpr std::size_t kPieceOfFile = 64 * 1024;
    std::string wanted(kPieceOfFile, '\0'), found(kPieceOfFile, '\0');
    source.seek(0, SEEK_SET);
    written.seek(0, SEEK_SET);
    while (length > 0) {
        const auto piece = static_cast<std::size_t>(std::min<qpdf_offset_t>(length, kPieceOfFile));
        if (source.read(wanted.data(), piece) != piece || written.read(found.data(), piece) != piece) return false;
        if (std::memcmp(wanted.data(), found.data(), piece) != 0) return false;
        length -= static_cast<qpdf_offset_t>(piece);
    }
    found.assign(rest.size() + 1, '\0');  // one more than there may be
    found.resize(written.read(found.data(), found.size()));
    return found == rest;
}

bool SamePlace(const QPDFXRefEntry& one, const QPDFXRefEntry& other)
{
    if (one.getType() != other.getType()) return false;
    if (one.getType() == 1) return one.getOffset() == other.getOffset();
    return one.getType() != 2 || (one.getObjStreamNumber() == other.getObjStreamNumber() &&
                                  one.getObjStreamIndex() == other.getObjStreamIndex());
}

/// Nothing but what was appended is defined otherwise than before.
bool SameTable(QPDF& written, QPDF& original, const IncrementalUpdate& update)
{
    auto wanted = original.getXRefTable();
    for (const auto& [object, offset] : update.places) {
        std::erase_if(wanted, [&](const auto& entry) { return entry.first.getObj() == object.getObj(); });
        wanted.emplace(object, QPDFXRefEntry(offset));
    }
    const auto found = written.getXRefTable();
    return std::equal(wanted.begin(), wanted.end(), found.begin(), found.end(),
                      [](const auto& one, const auto& other) {
                          return one.first == other.first && SamePlace(one.second, other.second);
                      });
}

std::string InformationProblem(QPDF& written, QPDF& original)
{
    QPDFObjectHandle wanted = original.getTrailer().getKey("/Info"), found = written.getTrailer().getKey("/Info");
    if (!wanted.isDictionary()) return found.isDictionary() ? "there is information that nobody asked for" : "";
    if (!found.isDictionary() || found.getKeys() != wanted.getKeys()) return "other information came back";
    for (const std::string& key : wanted.getKeys())
        if (found.getKey(key).unparse() != wanted.getKey(key).unparse())
            return "the information entry " + key + " came back otherwise";
    return {};
}

std::string AppendedCompared(InputSource& source, const std::shared_ptr<InputSource>& file, QPDF& original,
                             const IncrementalUpdate& update, const std::vector<std::string>& complaints,
                             const std::optional<WrittenEncryption>& encryption)
{
    source.seek(0, SEEK_END);
    if (!ContinuesWith(*file, source, source.tell(), update.bytes)) return "it does not begin like the old file";
    const auto written = Opened(file, encryption);
    if (!SameTable(*written, original, update)) return "other objects than the changed ones are defined anew";
    QPDFObjectHandle root = original.getTrailer().getKey("/Root");
    if (written->getTrailer().getKey("/Root").getObjGen() != root.getObjGen()) return "it has another catalogue";
    std::string problem = EncryptionProblem(*written, encryption);
    if (problem.empty()) problem = InformationProblem(*written, original);
    if (problem.empty() && update.packet && MetadataPacket(*written) != update.packet)
        problem = "the metadata packet came back otherwise";
    if (problem.empty()) problem = NewComplaint(*written, complaints, &WithoutNumbers);
    return problem;
}

/// What a comparison finds, or what the library says about the file.
template <class Comparison>
std::string Finding(Comparison comparison)
{
    try {
        return comparison();
    } catch (const QPDFExc& error) {
        return error.getMessageDetail();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace

std::string ReadBackProblem(const std::string& path, QPDF& original, const std::vector<std::string>& complaints,
                            const std::optional<WrittenEncryption>& encryption)
{
    return Finding([&] { return Compared(path, original, complaints, encryption); });
}

std::string FormerTextProblem(const std::string& path, const std::vector<FormerText>& former,
                              const std::map<std::string, std::string>& oldInfo,
                              const std::optional<WrittenEncryption>& encryption)
{
    return Finding([&] { return TraceOf(former, oldInfo, *Opened(OpenSource(path), encryption)); });
}

std::string AppendedProblem(const std::string& path, QPDF& original, InputSource& source,
                            const IncrementalUpdate& update, const std::vector<std::string>& complaints,
                            const std::optional<WrittenEncryption>& encryption)
{
    return Finding(
        [&] { return AppendedCompared(source, OpenSource(path), original, update, complaints, encryption); });
}

}  // namespace openhost
