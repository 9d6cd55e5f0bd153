#include "openhost/pdf/MuPdfTextEngine.h"

#include <mupdf/fitz.h>
#include <mupdf/pdf.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>

#include <qpdf/QUtil.hh>

#include "base/Unicode.h"

// The library reports errors by a long jump to the innermost fz_try, which passes over clean-ups. Each function with
// an fz_try therefore holds plain values only, and nothing that it calls inside has a destructor.

namespace openhost {
namespace {

constexpr std::size_t kStoreBytes = std::size_t{32} << 20;  // what the library may keep of fonts and images

struct Opened {
    pdf_document* document = nullptr;
    int pages = 0;
    bool locked = false;
    bool failed = false;
};

/// What the passwords worth trying are, as plain texts.
struct PasswordTexts {
    const char* texts[2];
};

Opened Open(fz_context* context, const char* path, const char* bytes, std::size_t length, PasswordTexts passwords)
{
    fz_stream* volatile stream = nullptr;
    pdf_document* volatile document = nullptr;
    volatile int pages = 0;
    volatile bool locked = false, failed = false;
    fz_try(context)
    {
        stream = path ? fz_open_file(context, path)
                      : fz_open_memory(context, reinterpret_cast<const unsigned char*>(bytes), length);
        document = pdf_open_document_with_stream(context, stream);
        locked = pdf_needs_password(context, document) != 0;
        for (const char* const text : passwords.texts)
            locked = locked && pdf_authenticate_password(context, document, text) == 0;
        if (!locked) pages = pdf_count_pages(context, document);
    }
    fz_always(context) fz_drop_stream(context, stream);
    fz_catch(context) failed = true;
    return {document, pages, locked, failed};
}

/// What the library finds on a page, in points of the page as it is shown; null when it fails.
struct ReadPage {
    fz_stext_page* text = nullptr;
    fz_rect bounds = fz_empty_rect;
    double userUnit = 1;
};

/// A field for a signature that shows nothing: the library would write "SIGN" there, which the document does not.
bool IsUnseenSignature(fz_context* context, pdf_annot* field)
{
    return pdf_widget_type(context, field) == PDF_WIDGET_TYPE_SIGNATURE &&
           !pdf_dict_get(context, pdf_annot_obj(context, field), PDF_NAME(AP));
}

ReadPage Read(fz_context* context, pdf_document* document, int page0)
{
    pdf_page* volatile page = nullptr;
    fz_stext_page* volatile text = nullptr;
    fz_device* volatile device = nullptr;
    volatile float unit = 0;
    fz_rect bounds = fz_empty_rect;
    fz_var(bounds);
    fz_try(context)
    {
        page = pdf_load_page(context, document, page0);
        unit = pdf_dict_get_real(context, page->obj, PDF_NAME(UserUnit));
        bounds = pdf_bound_page(context, page);
        text = fz_new_stext_page(context, bounds);
        fz_stext_options options = {};
        options.flags = FZ_STEXT_PRESERVE_LIGATURES;
        device = fz_new_stext_device(context, text, &options);
        pdf_run_page_contents(context, page, device, fz_identity, nullptr);
        for (pdf_annot* annotation = pdf_first_annot(context, page); annotation;
             annotation = pdf_next_annot(context, annotation))
            pdf_run_annot(context, annotation, device, fz_identity, nullptr);
        for (pdf_annot* field = pdf_first_widget(context, page); field; field = pdf_next_widget(context, field))
            if (!IsUnseenSignature(context, field)) pdf_run_annot(context, field, device, fz_identity, nullptr);
        fz_close_device(context, device);
    }
    fz_always(context)
    {
        fz_drop_device(context, device);
        fz_drop_page(context, reinterpret_cast<fz_page*>(page));
    }
    fz_catch(context)
    {
        fz_drop_stext_page(context, text);
        text = nullptr;
    }
    return {text, bounds, unit > 0 ? static_cast<double>(unit) : 1.0};
}

/// A character as it stands on its line.
struct Letter {
    char32_t character = 0;
    ShownBox box;
    double along = 0, length = 0;  // how far along the line its middle is, and how much of the line it takes
    double size = 0;
    const fz_stext_char* source = nullptr;
};

int RotationOf(fz_point direction)
{
    // The library's pages run downwards, so that a quarter clockwise points down.
    if (std::abs(direction.x) >= std::abs(direction.y)) return direction.x >= 0 ? 0 : 2;
    return direction.y > 0 ? 1 : 3;
}

/// Nothing for a letter of which the document does not say what it means.
std::optional<char32_t> CharacterOf(int code)
{
    if (code <= 0 || code > 0x10FFFF || code == static_cast<int>(kReplacementCharacter)) return std::nullopt;
    return static_cast<char32_t>(code);
}

/// Puts letters into the order in which they stand, with spaces where there are gaps: the library finds gaps only
/// where it goes from left to right.
std::vector<Letter> AsTheyStand(std::vector<Letter> letters)
{
    constexpr double kGap = 0.2;  // of the size of the letters
    std::ranges::stable_sort(letters, {}, &Letter::along);
    std::vector<Letter> spaced;
    for (const Letter& letter : letters) {
        if (!spaced.empty()) {
            const Letter& former = spaced.back();
            const double gap = letter.along - letter.length / 2 - former.along - former.length / 2;
            if (gap > kGap * letter.size)
                spaced.push_back({.character = U' ', .box = letter.box, .along = letter.along});
        }
        spaced.push_back(letter);
    }
    return spaced;
}

/// The letters of a line that stand at least partly on the page, in the order in which they stand. The library puts
/// letters from right to left into the order in which they are spoken.
std::vector<Letter> LettersOf(const fz_stext_line& line, const ReadPage& page)
{
    std::vector<Letter> letters;
    bool fromRight = false;
    for (const fz_stext_char* at = line.first_char; at; at = at->next) {
        const fz_rect area = fz_rect_from_quad(at->quad);
        const bool onPage = area.x0 <= page.bounds.x1 && area.x1 >= page.bounds.x0 && area.y0 <= page.bounds.y1 &&
                            area.y1 >= page.bounds.y0;
        const auto character = CharacterOf(at->c);
        if (!onPage || !character) continue;
        const auto shown = [&](float value, float origin) {
            return (static_cast<double>(value) - static_cast<double>(origin)) / page.userUnit;
        };
        const ShownBox box = {shown(area.x0, page.bounds.x0), shown(area.y0, page.bounds.y0),
                              shown(area.x1, page.bounds.x0), shown(area.y1, page.bounds.y0)};
        const double x = static_cast<double>(line.dir.x), y = static_cast<double>(line.dir.y);
        letters.push_back({.character = *character,
                           .box = box,
                           .along = (box.left + box.right) / 2 * x + (box.top + box.bottom) / 2 * y,
                           .length = box.Width() * std::abs(x) + box.Height() * std::abs(y),
                           .size = static_cast<double>(at->size) / page.userUnit,
                           .source = at});
        fromRight |= DirectionOf(letters.back().character) == Direction::RightToLeft;
    }
    return fromRight ? AsTheyStand(std::move(letters)) : letters;
}

ShownBox Around(const ShownBox& one, const ShownBox& other)
{
    return {std::min(one.left, other.left), std::min(one.top, other.top), std::max(one.right, other.right),
            std::max(one.bottom, other.bottom)};
}

class CMuPdfTextEngine final : public CTextEngine {
public:
    CMuPdfTextEngine() : m_context(fz_new_context(nullptr, nullptr, kStoreBytes))
    {
        if (!m_context) throw std::bad_alloc();
        // Complaints about damaged files would go to standard error.
        fz_set_warning_callback(
            m_context, [](void*, const char*) {}, nullptr);
        fz_set_error_callback(
            m_context, [](void*, const char*) {}, nullptr);
    }
    CMuPdfTextEngine(const CMuPdfTextEngine&) = delete;
    CMuPdfTextEngine& operator=(const CMuPdfTextEngine&) = delete;
    ~CMuPdfTextEngine() override
    {
        pdf_drop_document(m_context, m_opened.document);
        fz_drop_context(m_context);
    }

    void LoadFile(const std::string& path, const std::string& passwordBytes) override
    {
        Close(path);
        OpenWith(path.c_str(), passwordBytes);
    }

    void LoadMemory(std::string bytes, const std::string& description, const std::string& passwordBytes) override
    {
        Close(description);
        m_bytes = std::move(bytes);
        OpenWith(nullptr, passwordBytes);
    }

    int PageCount() const override { return m_opened.pages; }

    std::string PageText(int page0) override
    {
        std::string text;
        ForEachLine(page0, [&text](const fz_stext_line&, const std::vector<Letter>& letters) {
            for (const Letter& letter : letters) AppendUtf8(text, letter.character);
            text += '\n';
        });
        return text;
    }

    std::vector<TextPiece> Pieces(int page0, bool withFonts) override
    {
        std::vector<TextPiece> pieces;
        ForEachLine(page0, [&](const fz_stext_line& line, const std::vector<Letter>& letters) {
            AddPieces(line, letters, withFonts, pieces);
        });
        return pieces;
    }

private:
    void Close(const std::string& name)
    {
        pdf_drop_document(m_context, m_opened.document);
        m_opened = {};
        m_bytes.clear();
        m_name = name;
    }

    /// `path` is null for the bytes that are kept.
    void OpenWith(const char* path, const std::string& passwordBytes)
    {
        // The library wants UTF-8 and makes of it what the encryption needs.
        const std::string asUtf8 = QUtil::pdf_doc_to_utf8(passwordBytes);
        const PasswordTexts passwords = {{passwordBytes.c_str(), asUtf8.c_str()}};
        m_opened = openhost::Open(m_context, path, m_bytes.data(), m_bytes.size(), passwords);
        if (m_opened.failed) {
            m_opened.pages = 0;
            throw CPdfError(PdfProblem::Damaged, m_name, "the text reader cannot open it");
        }
        if (m_opened.locked) throw CPdfError(PdfProblem::NeedsPassword, m_name, "needs a password");
    }

    template <class Visit>
    void ForEachLine(int page0, Visit visit)
    {
        const bool exists = page0 >= 0 && page0 < PageCount();
        const ReadPage page = exists ? Read(m_context, m_opened.document, page0) : ReadPage{};
        if (!page.text)
            throw CPdfError(PdfProblem::BadPage, m_name, "page " + std::to_string(page0 + 1) + " cannot be read");
        const auto drop = [this](fz_stext_page* text) { fz_drop_stext_page(m_context, text); };
        const std::unique_ptr<fz_stext_page, decltype(drop)> owner(page.text, drop);
        for (const fz_stext_block* block = page.text->first_block; block; block = block->next) {
            if (block->type != FZ_STEXT_BLOCK_TEXT) continue;
            for (const fz_stext_line* line = block->u.t.first_line; line; line = line->next) {
                if (const auto letters = LettersOf(*line, page); !letters.empty()) visit(*line, letters);
            }
        }
    }

    /// A piece for each run of letters between spaces.
    void AddPieces(const fz_stext_line& line, const std::vector<Letter>& letters, bool withFonts,
                   std::vector<TextPiece>& pieces) const
    {
        bool inside = false;
        bool spaceBefore = false;  // on this line, behind a piece of it
        bool lineHasPiece = false;
        for (const Letter& letter : letters) {
            if (IsWhiteSpace(letter.character)) {
                inside = false;
                spaceBefore = lineHasPiece;
                continue;
            }
            if (!inside) {
                if (spaceBefore) pieces.back().spaceAfter = true;
                pieces.push_back({.text = {}, .boxes = {}, .box = letter.box, .rotation = RotationOf(line.dir)});
                if (withFonts) AddFont(letter, pieces.back());
                inside = lineHasPiece = true;
            }
            TextPiece& piece = pieces.back();
            piece.text += letter.character;
            piece.boxes.push_back(letter.box);
            piece.box = Around(piece.box, letter.box);
        }
    }

    void AddFont(const Letter& letter, TextPiece& piece) const
    {
        piece.fontName = WithoutSubsetMark(fz_font_name(m_context, letter.source->font));
        piece.fontSize = letter.size;
    }

    fz_context* m_context;
    Opened m_opened;
    std::string m_name;
    std::string m_bytes;  // the library reads from here as long as the document is open
};

}  // namespace

std::unique_ptr<CTextEngine> NewMuPdfTextEngine() { return std::make_unique<CMuPdfTextEngine>(); }

std::string MuPdfTextEngineVersion() { return std::string("mupdf ") + FZ_VERSION; }

}  // namespace openhost
