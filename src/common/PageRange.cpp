#include "common/PageRange.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "base/Text.h"

namespace {

constexpr const char* kFirstPage = "FirstPage";
constexpr const char* kLastPage = "LastPage";
constexpr const char* kPageSelection = "PageSelection";
constexpr const char* kPageSubset = "PageSubset";
constexpr const char* kFirstPageExpression = "FirstPageExpression";
constexpr const char* kLastPageExpression = "LastPageExpression";

constexpr const char* kStartAfterEnd =
    "Starting page number is greater than ending page number.\nPlease enter a valid page number.";

bool IsPageDigit(char letter) { return letter >= '0' && letter <= '9'; }

ResolvedPage Unresolved(std::string error, int page0 = 0) { return {std::max(page0, 0), false, std::move(error)}; }

/// The page when the document has it.
ResolvedPage Checked(long long page0, int pageCount)
{
    if (page0 < 0) return Unresolved(FormatText("Page number resolves to a negative page index: %lld.", page0));
    if (page0 >= pageCount) {
        // Kept: the number is the one that counts from 0.
        return Unresolved(
            FormatText("Page number %lld is greater than a total number of pages (%d).", page0, pageCount),
            pageCount - 1);
    }
    return {static_cast<int>(page0), true, {}};
}

ResolvedPage ResolveNumber(std::string_view expression, int pageCount)
{
    const std::string_view digits = expression.substr(expression.starts_with('-') ? 1 : 0);
    if (digits.empty() || !std::ranges::all_of(digits, IsPageDigit))
        return Unresolved("Invalid page number specified.");
    int number = 0;
    const auto read = std::from_chars(expression.data(), expression.data() + expression.size(), number);
    if (read.ec == std::errc::result_out_of_range)
        number = expression.starts_with('-') ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    if (number == 0) return Unresolved("Invalid page number. Page numbering start with 1.");  // sic
    return Checked(number > 0 ? number - 1LL : static_cast<long long>(pageCount) + number, pageCount);
}

std::optional<int> KeywordPage(const std::string& lowered, const std::string& name, const CPageReferences& document)
{
    if (lowered == "last") return document.PageCount() - 1;
    if (lowered.starts_with("b:")) return document.PageOfBookmark(name);
    if (lowered.starts_with("d:")) return document.PageOfDestination(name);
    if (lowered.starts_with("l:")) return document.PageOfLabel(name);
    return std::nullopt;
}

bool IsKeyword(const std::string& lowered)
{
    if (lowered.starts_with("last")) return true;
    const bool named = lowered.starts_with("b:") || lowered.starts_with("d:") || lowered.starts_with("l:");
    return named && lowered.size() > 2;
}

}  // namespace

ResolvedPage ResolvePageExpression(std::string_view expression, const CPageReferences& document)
{
    if (expression.empty()) return {};
    const int pageCount = document.PageCount();
    if (IsPageDigit(expression.front()) || expression.front() == '-') return ResolveNumber(expression, pageCount);
    const std::string lowered = ToLowerAscii(expression);
    const std::string text(expression);
    if (!IsKeyword(lowered)) return Unresolved("Unrecognized page reference keyword: " + text);
    const auto page = KeywordPage(lowered, text.substr(std::min<std::size_t>(2, text.size())), document);
    if (!page || *page < 0 || *page >= pageCount)
        return Unresolved("Keyword does not resolve to a valid page: " + text);
    return {*page, true, {}};
}

PageRange PageRange::Read(const CSettingsRecord& record)
{
    PageRange range;
    range.firstPage0 = record.Int(kFirstPage, range.firstPage0);
    range.lastPage0 = record.Int(kLastPage, range.lastPage0);
    range.selection = record.Int(kPageSelection, range.selection);
    range.subset = record.Int(kPageSubset, range.subset);
    range.firstExpression = record.String(kFirstPageExpression);
    range.lastExpression = record.String(kLastPageExpression);
    return range;
}

void PageRange::Write(CSettingsRecord& record) const
{
    record.PutInt(kFirstPage, firstPage0);
    record.PutInt(kLastPage, lastPage0);
    record.PutInt(kPageSelection, selection);
    record.PutInt(kPageSubset, subset);
    record.PutString(kFirstPageExpression, firstExpression);
    record.PutString(kLastPageExpression, lastExpression);
}

std::string PageRange::Describe() const
{
    std::string line = "Process All Pages";
    if (selection == static_cast<int>(PageSelection::Current)) {
        line = "Process Only Current Page";
    } else if (selection == static_cast<int>(PageSelection::FromTo)) {
        const std::string lastNumber = lastPage0 < 0 ? "Last Page" : std::to_string(lastPage0 + 1LL);
        line = "Process Pages: " + (firstExpression.empty() ? std::to_string(firstPage0 + 1LL) : firstExpression) +
               " to " + (lastExpression.empty() ? lastNumber : lastExpression);
    }
    if (subset == static_cast<int>(PageSubset::Odd)) line += " (Odd Pages Only)";
    if (subset == static_cast<int>(PageSubset::Even)) line += " (Even Pages Only)";
    return line;
}

Expected<std::vector<int>> PageRange::Pages(const CPageReferences& document, int current0) const
{
    const int pageCount = document.PageCount();
    long long first = 0, last = pageCount - 1LL;
    if (selection == static_cast<int>(PageSelection::Current)) {
        first = last = current0;
    } else if (selection == static_cast<int>(PageSelection::FromTo)) {
        first = firstPage0;
        if (lastPage0 >= 0) last = lastPage0;
        for (const auto& [expression, page] :
             {std::pair(&firstExpression, &first), std::pair(&lastExpression, &last)}) {
            if (expression->empty()) continue;
            const ResolvedPage resolved = ResolvePageExpression(*expression, document);
            if (!resolved.ok) return Failure(resolved.error);
            *page = resolved.page0;
        }
        const bool byExpression = !firstExpression.empty() || !lastExpression.empty();
        if (first > last && (byExpression || lastPage0 >= 0)) return Failure(kStartAfterEnd);
    }
    std::vector<int> pages;
    for (long long page = std::max(first, 0LL); page <= std::min(last, pageCount - 1LL); ++page) {
        const bool odd = page % 2 == 0;  // the first page is number 1
        if (subset == static_cast<int>(odd ? PageSubset::Even : PageSubset::Odd)) continue;
        pages.push_back(static_cast<int>(page));
    }
    return pages;
}

std::string PageNumbersProblem(int first, int last, std::optional<int> pageCount)
{
    if (first < 1) return "Starting page number is less than 1. Please enter a valid page number.";
    if (last < 1) return "Ending page number is less than 1. Please enter a valid page number.";
    if (first > last) return kStartAfterEnd;
    if (!pageCount || last <= *pageCount) return {};
    if (first == last) {
        return FormatText(
            "Page number (%d) is greater than number of pages in the current document (%d).\nPlease enter a valid "
            "page "
            "number.",
            last, *pageCount);
    }
    return FormatText(
        "Ending page number (%d) is greater than number of pages in the document (%d).\nPlease enter a valid page "
        "number.",
        last, *pageCount);
}
