#include "common/PageList.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "common/SearchPattern.h"

namespace {

constexpr std::string_view kRegexPrefix = "Regex=";
constexpr std::string_view kInvalidNumber = "Invalid page number specified.";

bool IsQuote(char letter) { return letter == '"' || letter == '\''; }

/// Takes the next item off the text; false when it was the last one.
bool TakeItem(std::string_view& rest, std::string& item)
{
    const std::string trimmed = TrimLeft(rest);
    if (trimmed.starts_with(kRegexPrefix)) {
        item = trimmed;
        return false;
    }
    char quote = 0;
    std::size_t end = 0;
    for (; end < rest.size() && (quote != 0 || rest[end] != ','); ++end) {
        if (quote != 0 ? rest[end] == quote : IsQuote(rest[end])) quote = quote != 0 ? '\0' : rest[end];
    }
    item = Trim(rest.substr(0, end));
    const bool more = end < rest.size();
    rest.remove_prefix(more ? end + 1 : end);
    return more;
}

Expected<PageListElement> TextCondition(const std::string& text, bool isExpression)
{
    if (text.empty()) return Failure("There is no text to look for.");
    auto expression = CompileItem({.text = text, .isExpression = isExpression});
    if (!expression) return Failure(expression.Error());
    PageListElement element;
    element.condition = std::make_shared<const CRegularExpression>(std::move(*expression));
    return element;
}

/// Takes a number off the text; nothing when there is none, or none that a page can have.
std::optional<int> TakeNumber(std::string_view& text)
{
    int number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc() || text.starts_with('-')) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
    return number;
}

Expected<PageListElement> Numbers(std::string_view text)
{
    PageListElement element;
    const char kind = text.back();
    const auto first = TakeNumber(text);
    if (!first) return Failure(std::string(kInvalidNumber));
    auto second = first;
    if (text.starts_with('-')) {
        text.remove_prefix(1);
        second = TakeNumber(text);
    }
    // What follows the numbers may be letters: half a range is none.
    if (!second || text.find_first_not_of("EDL\"") != text.npos) return Failure(std::string(kInvalidNumber));
    const auto [least, most] = std::minmax(*first, *second);
    if (least < 1) return Failure("Invalid page number. Page numbering start with 1.");  // sic
    element.start0 = least - 1;
    element.count = most - least + 1;
    if (kind == 'D') element.flags = kOddPages;
    if (kind == 'E') element.flags = kEvenPages;
    if (kind == 'L') element.flags |= kPagesFromEnd;
    if (*first > *second) element.flags |= kDescendingPages;
    return element;
}

}  // namespace

Expected<PageListElement> ParsePageListItem(std::string_view item)
{
    if (item.empty()) return Failure("Empty page range description string.");
    if (item.size() > 1 && IsQuote(item.front()) && item.back() == item.front())
        return TextCondition(std::string(item.substr(1, item.size() - 2)), false);
    if (item.starts_with(kRegexPrefix)) return TextCondition(std::string(item.substr(kRegexPrefix.size())), true);
    std::string text = ToUpperAscii(item);
    std::erase_if(text, [](char letter) { return letter == ' ' || letter == '\t'; });
    if (text.find_first_not_of("0123456789EDL-\"") != text.npos)
        return Failure("Invalid character encountered in the page range description.");
    if (text.empty()) return Failure("Empty page range description string.");
    return Numbers(text);
}

Expected<std::vector<PageListElement>> ParsePageList(std::string_view description)
{
    std::vector<PageListElement> elements;
    std::string item;
    for (bool more = true; more;) {
        more = TakeItem(description, item);
        auto element = ParsePageListItem(item);
        if (!element) {
            return Failure(
                FormatText("One of the pages (or page ranges) is not correctly specified. Please check item "
                           "number %d (%s).",
                           static_cast<int>(elements.size()) + 1, item.c_str()) +
                "\n" + element.Error());
        }
        elements.push_back(std::move(*element));
    }
    return elements;
}

std::vector<int> PagesOfElement(const PageListElement& element, int pageCount)
{
    std::vector<int> pages;
    const long long end = std::min<long long>(static_cast<long long>(element.start0) + element.count, pageCount);
    for (long long number0 = element.start0; number0 < end; ++number0) {
        const bool odd = number0 % 2 == 0;
        if ((element.flags & (odd ? kOddPages : kEvenPages)) == 0) continue;
        pages.push_back(static_cast<int>((element.flags & kPagesFromEnd) != 0 ? pageCount - 1 - number0 : number0));
    }
    if ((element.flags & kDescendingPages) != 0) std::ranges::reverse(pages);
    return pages;
}
