// Page expressions in a document of the host.
#pragma once

#include <map>
#include <vector>

#include "base/Expected.h"
#include "common/PageList.h"
#include "common/PageRange.h"
#include "hostapi/HostTypes.h"

/// What page expressions name in an open document. Borrows the document, whose pages must not change meanwhile: each
/// name is asked for once, however many ranges use it.
/// Everything throws CHostException when the host raises.
class CDocumentPages : public CPageReferences {
public:
    explicit CDocumentPages(PDDoc document);

    int PageCount() const override { return m_pageCount; }
    std::optional<int> PageOfBookmark(const std::string& title) const override;
    std::optional<int> PageOfDestination(const std::string& name) const override;
    std::optional<int> PageOfLabel(const std::string& label) const override;

private:
    using Known = std::map<std::string, std::optional<int>>;

    PDDoc m_document;
    int m_pageCount;
    mutable Known m_bookmarks, m_destinations, m_labels;
};

/// The pages (from 0) that a list has in a document: item by item in the order of the list, each item in its own; a
/// page that two items have is there twice. A text condition has, ascending, the pages whose text satisfies it; a
/// line end is a blank in that text. Pages are read only for conditions, and each once. Fails with a sentence when a
/// condition cannot be searched to its end. Throws CHostException, also when text must not be taken out.
[[nodiscard]] Expected<std::vector<int>> PagesOfList(PDDoc document, const std::vector<PageListElement>& list);
