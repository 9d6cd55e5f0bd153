#include "pdflib/DocumentPages.h"

#include "hostcalls/Documents.h"
#include "hostcalls/PageNames.h"

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
