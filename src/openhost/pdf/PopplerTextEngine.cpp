#include "openhost/pdf/PopplerTextEngine.h"

#include <climits>

#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-page.h>
#include <poppler-version.h>

#include "base/Unicode.h"

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

ShownBox BoxOf(const poppler::rectf& area)
{
    return {.left = area.left(), .top = area.top(), .right = area.right(), .bottom = area.bottom()};
}

/// The library's own way to UTF-8 ends at the first character that is none, so its UTF-16 is taken.
std::u32string CharactersOf(const poppler::ustring& text)
{
    return Utf16ToUtf32({reinterpret_cast<const char16_t*>(text.data()), text.size()});
}

TextPiece PieceOf(const poppler::text_box& box, bool withFonts)
{
    TextPiece piece{.text = CharactersOf(box.text()), .boxes = {}, .box = BoxOf(box.bbox())};
    piece.rotation = box.rotation();
    piece.spaceAfter = box.has_space_after();
    for (std::size_t i = 0; i < piece.text.size(); ++i) piece.boxes.push_back(BoxOf(box.char_bbox(i)));
    if (!withFonts) return piece;
    piece.fontName = WithoutSubsetMark(box.get_font_name());
    piece.fontSize = box.get_font_size();
    return piece;
}

/// What the library has set up for all documents goes with the last of them, and is made again for the next one,
/// which is a seventh of the time that the first page of a usual file takes. This one stays.
void KeepLibrarySetUp()
{
    static const std::string empty =
        "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj 2 0 obj<</Type/Pages/Kids[]/Count 0>>endobj "
        "trailer<</Root 1 0 R>>\n";
    static const std::unique_ptr<poppler::document> kept(
        poppler::document::load_from_raw_data(empty.data(), static_cast<int>(empty.size())));
}

class CPopplerTextEngine final : public CTextEngine {
public:
    CPopplerTextEngine()
    {
        // Complaints about damaged files would go to standard error.
        poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr);
        KeepLibrarySetUp();
    }

    void LoadFile(const std::string& path, const std::string& passwordBytes) override
    {
        m_name = path;
        m_document.reset();
        Adopt(LoadPopplerFile(path, passwordBytes, m_bytes));
    }

    void LoadMemory(std::string bytes, const std::string& description, const std::string& passwordBytes) override
    {
        m_name = description;
        if (bytes.size() > INT_MAX) throw CPdfError(PdfProblem::UnsupportedInput, m_name, "is too large for text");
        m_document.reset();
        m_bytes = std::move(bytes);
        Adopt(poppler::document::load_from_raw_data(m_bytes.data(), static_cast<int>(m_bytes.size()), passwordBytes,
                                                    passwordBytes));
    }

    int PageCount() const override { return m_document ? m_document->pages() : 0; }

    std::string PageText(int page0) override
    {
        const poppler::rectf area(-kBeyondAnyPage, -kBeyondAnyPage, 2 * kBeyondAnyPage, 2 * kBeyondAnyPage);
        return WithPlainLineEnds(Page(page0)->text(area, poppler::page::non_raw_non_physical_layout).to_utf8());
    }

    std::vector<TextPiece> Pieces(int page0, bool withFonts) override
    {
        std::vector<TextPiece> pieces;
        for (const auto& box : Page(page0)->text_list(withFonts ? poppler::page::text_list_include_font : 0))
            pieces.push_back(PieceOf(box, withFonts));
        return pieces;
    }

private:
    std::unique_ptr<poppler::page> Page(int page0) const
    {
        const bool exists = page0 >= 0 && page0 < PageCount();
        std::unique_ptr<poppler::page> page(exists ? m_document->create_page(page0) : nullptr);
        if (!page)
            throw CPdfError(PdfProblem::BadPage, m_name, "page " + std::to_string(page0 + 1) + " cannot be read");
        return page;
    }

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

std::unique_ptr<CTextEngine> NewPopplerTextEngine() { return std::make_unique<CPopplerTextEngine>(); }

std::string PopplerTextEngineVersion() { return "poppler " + poppler::version_string(); }

}  // namespace openhost
