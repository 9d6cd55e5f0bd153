#include "openhost/pdf/PageNames.h"

#include <algorithm>
#include <map>
#include <set>

#include <qpdf/QPDF.hh>

#include "openhost/pdf/PageTree.h"

namespace openhost {
namespace {

constexpr long long kLargestRoman = 4999;       // beyond, the numerals are but rows of M
constexpr long long kLongestLetterLabel = 100;  // letters; longer ones nobody can count

template <class Body>
auto InDocument(CPdfDocument& document, Body body) -> decltype(body())
{
    return Guarded(document.Description(), PdfProblem::Damaged, body);
}

/// Keys and values of a name or number tree, whose leaves have them in an array under `leafKey`.
void ForEachLeaf(QPDFObjectHandle tree, const char* leafKey,
                 const std::function<bool(QPDFObjectHandle key, QPDFObjectHandle value)>& visit)
{
    std::set<QPDFObjGen> entered;
    std::vector<QPDFObjectHandle> waiting{tree};
    while (!waiting.empty()) {
        QPDFObjectHandle node = waiting.back();
        waiting.pop_back();
        if (!node.isDictionary() || (node.isIndirect() && !entered.insert(node.getObjGen()).second)) continue;
        QPDFObjectHandle leaves = node.getKey(leafKey), kids = node.getKey("/Kids");
        for (int i = 0; leaves.isArray() && i + 1 < leaves.getArrayNItems(); i += 2)
            if (!visit(leaves.getArrayItem(i), leaves.getArrayItem(i + 1))) return;
        for (int i = kids.isArray() ? kids.getArrayNItems() : 0; i-- > 0;) waiting.push_back(kids.getArrayItem(i));
    }
}

std::string Roman(long long number)
{
    static constexpr std::pair<int, const char*> kNumerals[] = {
        {1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"}, {90, "xc"}, {50, "l"},
        {40, "xl"},  {10, "x"},   {9, "ix"},  {5, "v"},    {4, "iv"},  {1, "i"}};
    std::string text;
    for (const auto& [value, numeral] : kNumerals)
        for (; number >= value; number -= value) text += numeral;
    return text;
}

/// a to z, then aa to zz, aaa to zzz.
std::string Letters(long long number)
{
    return std::string(static_cast<std::size_t>((number - 1) / 26 + 1), static_cast<char>('a' + (number - 1) % 26));
}

std::string Uppercase(std::string text)
{
    for (char& letter : text) letter = static_cast<char>(letter - 'a' + 'A');
    return text;
}

/// Labels of pages that follow each other.
struct LabelRange {
    char style = 0;  // 0: the prefix alone
    std::string prefix;
    long long start = 1;

    std::string Label(int offset) const
    {
        const long long number = start + offset;
        const bool roman = (style == 'r' || style == 'R') && number <= kLargestRoman;
        const bool letters = (style == 'a' || style == 'A') && number <= 26 * kLongestLetterLabel;
        std::string text;
        if (roman || letters) {
            text = roman ? Roman(number) : Letters(number);
            if (style == 'R' || style == 'A') text = Uppercase(text);
        } else if (style != 0) {
            text = std::to_string(number);
        }
        return prefix + text;
    }
};

LabelRange RangeOf(QPDFObjectHandle description)
{
    LabelRange range;
    if (!description.isDictionary()) return range;
    QPDFObjectHandle style = description.getKey("/S"), prefix = description.getKey("/P"),
                     start = description.getKey("/St");
    if (style.isName() && style.getName().size() == 2 && std::string("DRrAa").find(style.getName()[1]) < 5)
        range.style = style.getName()[1];
    if (prefix.isString()) range.prefix = prefix.getUTF8Value();
    if (start.isInteger() && start.getIntValue() >= 1 && start.getIntValue() <= INT32_MAX)
        range.start = start.getIntValue();
    return range;
}

}  // namespace

std::vector<std::string> PageLabelsOf(CPdfDocument& document)
{
    return InDocument(document, [&] {
        const int pageCount = document.PageCount();
        std::map<long long, LabelRange> ranges;
        ForEachLeaf(document.Library().getRoot().getKey("/PageLabels"), "/Nums", [&](auto key, auto value) {
            if (key.isInteger() && key.getIntValue() >= 0 && key.getIntValue() < pageCount)
                ranges.try_emplace(key.getIntValue(), RangeOf(value));
            return true;
        });
        std::vector<std::string> labels;
        for (int page = 0; page < pageCount; ++page) {
            const auto after = ranges.upper_bound(page);
            std::string label;
            if (after != ranges.begin())
                label = std::prev(after)->second.Label(static_cast<int>(page - std::prev(after)->first));
            labels.push_back(label.empty() ? std::to_string(page + 1) : std::move(label));
        }
        return labels;
    });
}

void ForEachBookmark(CPdfDocument& document, QPDFObjectHandle parent, int depth,
                     const std::function<bool(QPDFObjectHandle)>& visit)
{
    InDocument(document, [&] {
        struct Waiting {
            QPDFObjectHandle bookmark;
            int depth;
        };
        std::set<QPDFObjGen> met{parent.getObjGen()};
        std::vector<Waiting> waiting;
        const auto wait = [&](QPDFObjectHandle bookmark, int below) {
            const bool isNew = !bookmark.isIndirect() || met.insert(bookmark.getObjGen()).second;
            if (bookmark.isDictionary() && isNew) waiting.push_back({bookmark, below});
        };
        if (parent.isDictionary() && depth != 0) wait(parent.getKey("/First"), depth);
        while (!waiting.empty()) {
            const Waiting next = waiting.back();
            waiting.pop_back();
            QPDFObjectHandle bookmark = next.bookmark;
            if (!visit(bookmark)) return;
            wait(bookmark.getKey("/Next"), next.depth);
            if (next.depth != 1) wait(bookmark.getKey("/First"), next.depth < 0 ? -1 : next.depth - 1);
        }
    });
}

QPDFObjectHandle InNameTree(CPdfDocument& document, QPDFObjectHandle tree, const std::string& key)
{
    return InDocument(document, [&] {
        const std::string text = QPDFObjectHandle::newString(key).getUTF8Value();
        QPDFObjectHandle same = QPDFObjectHandle::newNull(), alike = same;
        ForEachLeaf(tree, "/Names", [&](QPDFObjectHandle name, QPDFObjectHandle value) {
            if (!name.isString()) return true;
            if (name.getStringValue() == key) same = value;
            if (alike.isNull() && name.getUTF8Value() == text) alike = value;
            return same.isNull();
        });
        return same.isNull() ? alike : same;
    });
}

void ForEachName(CPdfDocument& document, QPDFObjectHandle tree,
                 const std::function<bool(QPDFObjectHandle key, QPDFObjectHandle value)>& visit)
{
    InDocument(document, [&] { ForEachLeaf(tree, "/Names", visit); });
}

QPDFObjectHandle ResolvedDestination(CPdfDocument& document, QPDFObjectHandle destination)
{
    return InDocument(document, [&] {
        QPDFObjectHandle root = document.Library().getRoot(), names = root.getKey("/Names"),
                         former = root.getKey("/Dests"), found = destination;
        if (destination.isName() || destination.isString()) {
            const std::string key =
                destination.isName() ? destination.getName().substr(1) : destination.getStringValue();
            found = QPDFObjectHandle::newNull();
            // Names belong into the dictionary and strings into the tree; producers mix them up.
            if (names.isDictionary()) found = InNameTree(document, names.getKey("/Dests"), key);
            if (former.isDictionary() && (found.isNull() || destination.isName()) && former.hasKey('/' + key))
                found = former.getKey('/' + key);
        }
        if (found.isDictionary()) found = found.getKey("/D");
        return found.isArray() ? found : QPDFObjectHandle::newNull();
    });
}

std::optional<int> PageOfDestination(CPdfDocument& document, QPDFObjectHandle destination)
{
    return InDocument(document, [&]() -> std::optional<int> {
        if (!destination.isArray() || destination.getArrayNItems() == 0) return std::nullopt;
        QPDFObjectHandle target = destination.getArrayItem(0);
        const auto pages = PagesOf(document.Library());
        if (target.isInteger()) {  // some producers write the number
            const long long number = target.getIntValue();
            return number >= 0 && number < static_cast<long long>(pages.size())
                       ? std::optional(static_cast<int>(number))
                       : std::nullopt;
        }
        if (!target.isIndirect()) return std::nullopt;
        const auto page = std::ranges::find_if(pages, [&](const QPDFObjectHandle& candidate) {
            return candidate.isIndirect() && candidate.getObjGen() == target.getObjGen();
        });
        if (page == pages.end()) return std::nullopt;
        return static_cast<int>(page - pages.begin());
    });
}

}  // namespace openhost
