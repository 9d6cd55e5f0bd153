#include "openhost/pdf/XrefCheck.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <qpdf/InputSource.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFXRefEntry.hh>
#include <string>
#include <string_view>

namespace openhost {
namespace {

constexpr std::size_t kHeaderWithin = 1024;  // offsets count from a header that begins so early
constexpr std::size_t kBytesLookedAt = 64;   // of an object, unless comments stand before it
constexpr std::size_t kMostBytesLookedAt = 4096;

std::string ReadAt(InputSource& source, qpdf_offset_t offset, std::size_t count)
{
    std::string bytes(count, '\0');
    source.seek(offset, SEEK_SET);
    bytes.resize(source.read(bytes.data(), count));
    return bytes;
}

qpdf_offset_t HeaderOffset(InputSource& source)
{
    const std::size_t at = ReadAt(source, 0, kHeaderWithin + 5).find("%PDF-");
    return at == std::string::npos || at > kHeaderWithin ? 0 : static_cast<qpdf_offset_t>(at);
}

bool IsSpace(char c) { return c == '\0' || std::isspace(static_cast<unsigned char>(c)) != 0; }

void SkipBlanks(std::string_view& text)
{
    while (!text.empty() && (IsSpace(text.front()) || text.front() == '%')) {
        if (text.front() == '%')
            text.remove_prefix(std::min(text.find_first_of("\r\n"), text.size()));
        else
            text.remove_prefix(1);
    }
}

/// Takes a number from the front; -1 when there is none.
int TakeNumber(std::string_view& text)
{
    SkipBlanks(text);
    int number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return -1;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

/// Takes "7 0 obj" from the front.
bool TakeBeginning(std::string_view& text, QPDFObjGen object)
{
    if (TakeNumber(text) != object.getObj() || TakeNumber(text) != object.getGen()) return false;
    SkipBlanks(text);
    if (!text.starts_with("obj")) return false;
    text.remove_prefix(3);
    return true;
}

bool BeginsObject(std::string_view text, QPDFObjGen object) { return TakeBeginning(text, object); }

bool SaysNothing(std::string_view text, QPDFObjGen object)
{
    if (!TakeBeginning(text, object)) return false;
    SkipBlanks(text);
    return text.starts_with("null") || text.starts_with("endobj");
}

}  // namespace

std::vector<QPDFObjGen> MisplacedObjects(QPDF& document, InputSource& source)
{
    const qpdf_offset_t header = HeaderOffset(source);
    std::vector<QPDFObjGen> misplaced;
    for (const auto& [object, entry] : document.getXRefTable()) {
        if (entry.getType() != 1 || entry.getOffset() == 0 || object.getObj() == 0) continue;
        const qpdf_offset_t offset = header + entry.getOffset();
        if (BeginsObject(ReadAt(source, offset, kBytesLookedAt), object)) continue;
        if (!BeginsObject(ReadAt(source, offset, kMostBytesLookedAt), object)) misplaced.push_back(object);
    }
    return misplaced;
}

std::vector<QPDFObjGen> UnreadableObjects(QPDF& document, InputSource& source)
{
    const qpdf_offset_t header = HeaderOffset(source);
    std::vector<QPDFObjGen> unreadable;
    for (const auto& [object, entry] : document.getXRefTable()) {
        if (object.getObj() == 0 || !document.getObject(object).isNull()) continue;
        // An object of a stream of objects may be nothing; that a stream is missing shows with the stream itself.
        if (entry.getType() != 1) continue;
        if (!SaysNothing(ReadAt(source, header + entry.getOffset(), kBytesLookedAt), object))
            unreadable.push_back(object);
    }
    return unreadable;
}

}  // namespace openhost
