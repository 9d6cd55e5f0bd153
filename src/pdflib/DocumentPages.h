// Page expressions in a document of the host.
#pragma once

#include <map>

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
