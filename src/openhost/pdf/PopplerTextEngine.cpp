#include "openhost/pdf/PopplerTextEngine.h"

#include <climits>

#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-page.h>

#include "openhost/pdf/Conversions.h"

namespace openhost {
namespace {

/// More than any page measures. Given as the area because the library's own choice, the unrotated crop box, loses
/// text of pages that are turned or do not begin at 0.
constexpr double kBeyondAnyPage = 100000;

/// The text with LF at the ends of lines; on Windows the library writes CR LF.
std::string WithPlainLineEnds(const poppler::byte_array& text)
{
    std::string plain;
    plain.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const bool beforeLineFeed = i + 1 < text.size() && text[i + 1] == '\n';
        if (text[i] != '\r' || !beforeLineFeed) plain += text[i];
    }
    return plain;
}

class CPopplerTextEngine final : public CTextEngine {
public:
    CPopplerTextEngine()
    {
        // Complaints about damaged files would go to standard error.
        poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr);
    }

    void LoadFile(const std::string& path, const std::string& passwordBytes) override
    {
        m_name = path;
        m_document.reset();
        Adopt(LoadPopplerFile(path, passwordBytes, m_bytes));
    }

    void LoadMemory(std::string bytes, const std::string& description) override
    {
        m_name = description;
        if (bytes.size() > INT_MAX) throw CPdfError(PdfProblem::UnsupportedInput, m_name, "is too large for text");
        m_document.reset();
        m_bytes = std::move(bytes);
        Adopt(poppler::document::load_from_raw_data(m_bytes.data(), static_cast<int>(m_bytes.size())));
    }

    int PageCount() const override { return m_document ? m_document->pages() : 0; }

    std::string PageText(int page0) override
    {
        const bool exists = page0 >= 0 && page0 < PageCount();
        const std::unique_ptr<poppler::page> page(exists ? m_document->create_page(page0) : nullptr);
        if (!page) {
            throw CPdfError(PdfProblem::BadPage, m_name, "page " + std::to_string(page0 + 1) + " cannot be read");
        }
        const poppler::rectf area(-kBeyondAnyPage, -kBeyondAnyPage, 2 * kBeyondAnyPage, 2 * kBeyondAnyPage);
        return WithPlainLineEnds(page->text(area, poppler::page::non_raw_non_physical_layout).to_utf8());
    }

private:
    void Adopt(poppler::document* document)
    {
        m_document.reset(document);
        if (!document) throw CPdfError(PdfProblem::Damaged, m_name, "the text reader cannot open it");
        if (document->is_locked()) throw CPdfError(PdfProblem::NeedsPassword, m_name, "needs a password");
    }

    std::string m_name;
    std::string m_bytes;
    std::unique_ptr<poppler::document> m_document;
};

}  // namespace

std::unique_ptr<CTextEngine> NewTextEngine() { return std::make_unique<CPopplerTextEngine>(); }

}  // namespace openhost
