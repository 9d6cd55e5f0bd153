#include "pdflib/DocumentPages.h"

#include <algorithm>

#include "hostcalls/Documents.h"
#include "hostcalls/PageNames.h"
#include "pdflib/PageText.h"

namespace {

template <class Known, class Ask>
std::optional<int> AskedOnce(Known& known, const std::string& name, Ask ask)
{
    const auto found = known.find(name);
    return found != known.end() ? found->second : known[name] = ask();
}

}  // namespace

CDocumentPages::CDocumentPages(PDDoc document) : m_document(document), m_pageCount(::PageCount(document)) {}

std::optional<int> CDocumentPages::PageOfBookmark(const std::string& title) const
{
    return AskedOnce(m_bookmarks, title, [&] { return ::PageOfBookmark(m_document, title); });
}

std::optional<int> CDocumentPages::PageOfDestination(const std::string& name) const
{
    return AskedOnce(m_destinations, name, [&] { return ::PageOfDestination(m_document, name); });
}

std::optional<int> CDocumentPages::PageOfLabel(const std::string& label) const
{
    return AskedOnce(m_labels, label, [&] { return ::PageOfLabel(m_document, label); });
}

Expected<std::vector<int>> PagesOfList(PDDoc document, const std::vector<PageListElement>& list)
{
    const int pageCount = PageCount(document);
    std::vector<std::vector<int>> pagesOf(list.size());
    for (std::size_t i = 0; i < list.size(); ++i)
        if (!list[i].condition) pagesOf[i] = PagesOfElement(list[i], pageCount);

    if (std::ranges::any_of(list, [](const PageListElement& element) { return element.condition != nullptr; })) {
        CDocumentText text(document);
        for (int page0 = 0; page0 < pageCount; ++page0) {
            const CSearchedText& searched = text.Page(page0).Text(LineEnds::Blanks);
            for (std::size_t i = 0; i < list.size(); ++i) {
                if (!list[i].condition) continue;
                const auto satisfied = list[i].condition->IsSatisfiedBy(searched);
                if (!satisfied) return Failure(satisfied.Error());
                if (*satisfied) pagesOf[i].push_back(page0);
            }
        }
    }
    std::vector<int> pages;
    for (const auto& each : pagesOf) pages.insert(pages.end(), each.begin(), each.end());
    return pages;
}
