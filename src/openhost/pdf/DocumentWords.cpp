#include "openhost/pdf/DocumentWords.h"

#include "base/Overseer.h"
#include "openhost/pdf/OutputProfiles.h"
#include "platform/FileDigest.h"

namespace openhost {

CDocumentWords::CDocumentWords(CPdfDocument& document, const WordOptions& options, CTextCache* cache)
    : m_options(options)
{
    if (!document.Allows(PdfRight::Copy))
        throw CPdfError(PdfProblem::NotPermitted, document.Description(), "taking text out is not permitted");
    const int pages = document.PageCount();
    const CPageBoxes boxes(document);
    for (int page0 = 0; page0 < pages; ++page0)
        m_views.push_back({boxes.Box(page0, BoxKind::Crop), boxes.Rotation(page0)});
    OpenCache(document, cache);
    if (m_cache) return;
    m_engine = NewTextEngine();
    LoadPresentState(*m_engine, document);
}

CDocumentWords::~CDocumentWords()
{
    if (!m_cache || !m_stored.IsChanged()) return;
    try {
        // What was read while somebody wrote into the file belongs to no content that is known.
        if (platform::StampOf(m_path) == m_stamp) m_cache->Keep(m_sha256, m_options, m_stored);
    } catch (...) {
        // Without memory for it, it is not kept.
    }
}

void CDocumentWords::OpenCache(CPdfDocument& document, CTextCache* cache)
{
    if (!cache || !cache->Problem().empty()) return;
    if (document.IsEncrypted() || document.WasRepaired() || !document.FileShowsPresentState()) return;
    const CUnwatched unwatched;  // this only looks
    m_path = document.Path();
    m_stamp = platform::StampOf(m_path);
    m_sha256 = platform::Sha256OfFile(m_path);
    if (!m_stamp || m_sha256.empty()) return;
    m_cache = cache;
    m_profiles = OutputProfilesIn(document);
    m_stored = cache->Find(m_sha256, m_options);
}

CTextEngine& CDocumentWords::Engine()
{
    if (!m_engine) {
        auto engine = NewTextEngine();
        LoadWithoutProfiles(*engine, m_path, "", m_profiles);
        m_engine = std::move(engine);
    }
    return *m_engine;
}

CPageWords CDocumentWords::Page(int page0)
{
    if (!m_cache) return PageWithUnits(page0);
    if (auto stored = m_stored.Page(page0)) return std::move(*stored);
    CPageWords words = PageWithUnits(page0);
    m_stored.AddPage(page0, words);
    return words;
}

CPageWords CDocumentWords::PageWithUnits(int page0)
{
    return WordsOf(Engine().Pieces(page0, m_options.fonts), m_views.at(static_cast<std::size_t>(page0)), m_options);
}

}  // namespace openhost
