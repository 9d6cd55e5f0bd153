#include "openhost/pdf/DocumentLoss.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <qpdf/InputSource.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFXRefEntry.hh>

#include "openhost/pdf/PageTree.h"

namespace openhost {
namespace {

constexpr std::size_t kHeaderBeginsWithin = 1024;  // offsets count from a header that begins so early
constexpr std::size_t kBytesLookedAt = 64;         // of an object, unless comments stand before it
constexpr std::size_t kMostBytesLookedAt = 4096;

std::string ReadAt(InputSource& source, qpdf_offset_t offset, std::size_t count)
{
    std::string bytes(count, '\0');
    source.seek(offset, SEEK_SET);
    bytes.resize(source.read(bytes.data(), count));
    return bytes;
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

qpdf_offset_t HeaderOffset(InputSource& source)
{
    const std::size_t at = ReadAt(source, 0, kHeaderBeginsWithin + 5).find("%PDF-");
    return at > kHeaderBeginsWithin ? 0 : static_cast<qpdf_offset_t>(at);
}

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

namespace {

using Objects = std::set<QPDFObjGen>;

/// Everything that is referred to from these objects, directly or through others, there or not.
Objects Reachable(std::vector<QPDFObjectHandle> open)
{
    Objects reached;
    const auto visit = [&](QPDFObjectHandle child) {
        const bool isContainer = child.isDictionary() || child.isArray() || child.isStream();
        const bool isNew = !child.isIndirect() || reached.insert(child.getObjGen()).second;
        if (isNew && isContainer) open.push_back(child);
    };
    while (!open.empty()) {
        QPDFObjectHandle object = open.back();
        open.pop_back();
        if (object.isArray())
            for (QPDFObjectHandle child : object.aitems()) visit(child);
        else
            for (auto& [key, child] : (object.isStream() ? object.getDict() : object).getDictAsMap()) visit(child);
    }
    return reached;
}

/// What a page needs to be shown, without the ways that lead back to other pages.
Objects NeededByPages(QPDF& document)
{
    std::vector<QPDFObjectHandle> needed;
    for (QPDFObjectHandle page : PagesOf(document)) {
        QPDFObjectHandle content = QPDFObjectHandle::newArray();
        for (const char* key : {"/Contents", "/Resources"}) content.appendItem(page.getKey(key));
        needed.push_back(content);
    }
    return Reachable(std::move(needed));
}

std::size_t CountMissing(const Objects& wanted, QPDF& document, const std::set<int>* claimed)
{
    const auto table = document.getXRefTable();
    return static_cast<std::size_t>(std::count_if(wanted.begin(), wanted.end(), [&](QPDFObjGen object) {
        return !table.contains(object) && (!claimed || claimed->contains(object.getObj())) &&
               document.getObject(object).isNull();
    }));
}

/// Objects that are in the table and in use, but cannot be read.
std::size_t CountUnreadable(QPDF& document, InputSource& source)
{
    const std::vector<QPDFObjGen> unreadable = UnreadableObjects(document, source);
    if (unreadable.empty()) return 0;
    const Objects used = Reachable({document.getTrailer()});
    return static_cast<std::size_t>(std::count_if(unreadable.begin(), unreadable.end(),
                                                  [&](QPDFObjGen object) { return used.contains(object); }));
}

std::size_t LostObjects(QPDF& document, InputSource& source, const FileScan* scan)
{
    std::size_t lost = CountUnreadable(document, source);
    // A reference that leads nowhere stands for nothing, and sound documents have such, too. After a repair it tells
    // of a loss when the old table had the object, or a page needs it.
    if (scan) {
        const std::size_t ofTable = CountMissing(Reachable({document.getTrailer()}), document, &scan->claimed);
        lost += std::max(ofTable, CountMissing(NeededByPages(document), document, nullptr));
    }
    return lost;
}

std::string Counted(std::size_t count, const char* what)
{
    return std::to_string(count) + ' ' + what + (count == 1 ? " cannot be read" : "s cannot be read");
}

/// A count that is too small or too large says nothing as long as each entry of the tree leads to a page.
std::string LostPages(QPDF& document, bool rebuilt)
{
    const PageWalk walk = WalkPages(document);
    const std::size_t pages = walk.pages.size(), claimed = ClaimedPages(document).value_or(0);
    if (claimed == pages || (!rebuilt && walk.unreadable == 0)) return {};
    if (claimed > pages)
        return std::to_string(claimed - pages) + " of " + std::to_string(claimed) + " pages cannot be read";
    return walk.unreadable > 0 ? Counted(walk.unreadable, "entry of the page tree") : "";
}

}  // namespace

bool UsesAnyOf(QPDF& document, const std::vector<QPDFObjGen>& objects)
{
    if (objects.empty()) return false;
    const Objects used = Reachable({document.getTrailer()});
    return std::any_of(objects.begin(), objects.end(), [&](QPDFObjGen object) { return used.contains(object); });
}

std::string LossOf(QPDF& document, InputSource& source, const RepairFacts& facts)
{
    std::vector<std::string> losses;
    if (facts.scan && facts.scan->endsEarly) losses.emplace_back("it ends before its trailer, as half a copy does");
    if (facts.pagesSearched)
        losses.emplace_back("its pages had to be searched for");
    else if (facts.catalogueSearched)
        losses.emplace_back("it has several catalogues, and none is named");
    if (!facts.pagesSearched)
        if (std::string pages = LostPages(document, facts.scan != nullptr); !pages.empty()) losses.push_back(pages);
    if (const std::size_t objects = LostObjects(document, source, facts.scan))
        losses.push_back(Counted(objects, "object"));
    std::string sentence;
    for (const std::string& loss : losses) sentence += (sentence.empty() ? "The file is damaged: " : "; ") + loss;
    return sentence.empty() ? sentence : sentence + '.';
}

}  // namespace openhost
