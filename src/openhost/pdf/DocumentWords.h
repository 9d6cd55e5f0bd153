// The words of a document's pages, from wherever they are had soonest.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "openhost/pdf/PageWords.h"
#include "openhost/pdf/TextCache.h"

namespace openhost {

/// The words of a document as it is when this is made; the document may go. Pages count from 0.
class CDocumentWords {
public:
    /// `cache` is borrowed, and null for none. Fails: CPdfError, NotPermitted when text must not be taken out.
    CDocumentWords(CPdfDocument& document, const WordOptions& options, CTextCache* cache);
    CDocumentWords(const CDocumentWords&) = delete;
    CDocumentWords& operator=(const CDocumentWords&) = delete;
    ~CDocumentWords();

    int PageCount() const { return static_cast<int>(m_views.size()); }
    /// Words without the places of their units, it may be. Fails: CPdfError.
    CPageWords Page(int page0);
    /// Words with the places of their units, which always takes the text engine. Fails: CPdfError.
    CPageWords PageWithUnits(int page0);

private:
    void OpenCache(CPdfDocument& document, CTextCache* cache);
    CTextEngine& Engine();

    WordOptions m_options;
    std::vector<PageView> m_views;
    std::unique_ptr<CTextEngine> m_engine;  // null until it is needed, when the file has everything
    std::string m_path;
    std::vector<std::uint64_t> m_profiles;  // offsets in the file
    CTextCache* m_cache = nullptr;          // null when this document has no place in it
    std::string m_sha256;
    std::optional<platform::FileStamp> m_stamp;  // of the file when its digest was made
    CStoredWords m_stored;
};

}  // namespace openhost
