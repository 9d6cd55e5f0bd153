#include "openhost/catalog/DocumentTexts.h"

#include <algorithm>
#include <memory>

#include "base/Unicode.h"
#include "openhost/catalog/TextMessages.h"
#include "openhost/jobs/WorkerLink.h"
#include "openhost/pdf/DocumentWords.h"
#include "openhost/pdf/PdfDocument.h"

namespace openhost {

namespace {

/// More than anybody writes on a page; a page that claims more was made to do harm.
constexpr std::size_t kLongestPage = 8 << 20;
constexpr int kMostPages = (1 << kPageBits) - 1;

bool TryPasswords(CPdfDocument& document, const std::vector<std::string>& passwords)
{
    for (const WantedRights wanted : {WantedRights::Owner, WantedRights::Open})
        for (const std::string& password : passwords)
            if (document.Authorize(password, wanted)) return true;
    return false;
}

/// Whatever gives the words of pages: the one place that knows.
class CPageTexts {
public:
    CPageTexts(CPdfDocument& document, CTextCache* cache) : m_words(document, {.fonts = false}, cache) {}

    std::string Page(int page0)
    {
        std::u16string text;
        for (const PageWord& word : m_words.Page(page0)) {
            text += word.text;
            if (word.spaceAfter || word.endsLine) text += u' ';
        }
        while (!text.empty() && text.back() == u' ') text.pop_back();
        return Utf16ToUtf8(text);
    }

private:
    CDocumentWords m_words;
};

std::string Listed(const std::vector<int>& pages)
{
    constexpr std::size_t kMost = 10;
    std::string text;
    for (std::size_t i = 0; i < std::min(pages.size(), kMost); ++i)
        text += (i == 0 ? "" : ", ") + std::to_string(pages[i]);
    return pages.size() > kMost ? text + " and " + std::to_string(pages.size() - kMost) + " more" : text;
}

void ReadPages(CPdfDocument& document, CTextCache* cache, DocumentTexts& texts)
{
    CPageTexts source(document, cache);
    const int count = std::min(document.PageCount(), kMostPages);
    texts.pageCount = count;
    std::vector<int> unread, cut;
    for (int page0 = 0; page0 < count; ++page0) {
        std::string text;
        try {
            text = source.Page(page0);
        } catch (const CPdfError&) {
            unread.push_back(page0 + 1);
        }
        if (text.size() > kLongestPage) {
            cut.push_back(page0 + 1);
            text.resize(kLongestPage);
        }
        texts.pages.push_back(SanitizeUtf8(text));
    }
    if (!unread.empty()) texts.message = "Pages that could not be read: " + Listed(unread) + ".";
    if (!cut.empty())
        texts.message +=
            (texts.message.empty() ? "" : " ") + ("Pages with too much text for the index: " + Listed(cut) + ".");
    const bool none =
        std::all_of(texts.pages.begin(), texts.pages.end(), [](const auto& text) { return text.empty(); });
    if (!none) return;
    texts.state = static_cast<int>(unread.size()) == count ? DocumentState::Failed : DocumentState::NoText;
    if (texts.message.empty()) texts.message = "There is no text in it.";
}

DocumentState StateOf(PdfProblem problem)
{
    switch (problem) {
        case PdfProblem::NeedsPassword:
        case PdfProblem::UnsupportedSecurity:
            return DocumentState::NeedsPassword;
        case PdfProblem::NotFound:
        case PdfProblem::NoAccess:
        case PdfProblem::CannotRead:
            return DocumentState::Unreadable;
        default:
            return DocumentState::Failed;
    }
}

/// Whoever tells the message names the file.
std::string WithoutName(const std::string& message, const std::string& path)
{
    return message.starts_with(path + ": ") ? message.substr(path.size() + 2) : message;
}

void Read(const TextOrder& order, const std::vector<std::string>& passwords, CTextCache* cache, DocumentTexts& texts)
{
    CPdfDocument document = CPdfDocument::Open(order.path, {.authorise = [&](CPdfDocument& locked) {
                                                   texts.encrypted = true;
                                                   return order.includeEncrypted && TryPasswords(locked, passwords);
                                               }});
    texts.encrypted = document.IsEncrypted();
    if (texts.encrypted && !order.includeEncrypted) {
        texts.state = DocumentState::LeftOut;
        return;
    }
    if (!document.Allows(PdfRight::Copy)) (void)TryPasswords(document, passwords);
    if (document.Allows(PdfRight::Copy))
        ReadPages(document, cache, texts);
    else
        texts.state = DocumentState::NotPermitted;
}

}  // namespace

DocumentTexts ReadDocumentTexts(const TextOrder& order, const std::vector<std::string>& passwordsUtf8,
                                CTextCache* cache)
{
    DocumentTexts texts;
    try {
        Read(order, passwordsUtf8, cache, texts);
    } catch (const CPdfError& error) {
        texts.state = StateOf(error.Problem());
        texts.encrypted = texts.encrypted || texts.state == DocumentState::NeedsPassword;
        texts.message = WithoutName(error.Message(), order.path);
    } catch (const std::exception& error) {
        texts.state = DocumentState::Failed;
        texts.message = error.what();
    }
    if (texts.encrypted && !order.includeEncrypted) texts.state = DocumentState::LeftOut;
    if (texts.state == DocumentState::LeftOut)
        texts.message = "It is encrypted; the index leaves such documents out.";
    if (texts.state == DocumentState::NotPermitted) texts.message = "Taking text out of it is not permitted.";
    if (texts.state != DocumentState::Indexed) texts.pages.clear();
    return texts;
}

int ServeTexts(const std::vector<std::string>& passwordsUtf8, const std::string& cacheFolder)
{
    const auto cache = cacheFolder.empty() ? nullptr : std::make_unique<CTextCache>(cacheFolder);
    const auto streams = CLineStream::TakeStandardStreams();
    if (!streams) return 1;
    CLineStream lines(streams->first, streams->second);
    while (const auto line = lines.NextLine()) {
        const DocumentTexts texts = ReadDocumentTexts(TextOrderFrom(*line), passwordsUtf8, cache.get());
        for (const std::string& page : texts.pages) lines.Put(PageLine(page));
        lines.Put(EndLine(texts));
        if (!lines.Flush()) return 1;
    }
    return 0;
}

}  // namespace openhost
