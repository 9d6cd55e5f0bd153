// Word finders: the words of a document's pages as plug-ins read them.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/Unicode.h"
#include "openhost/documents/Documents.h"
#include "openhost/documents/Slots.h"
#include "openhost/pdf/DocumentWords.h"
#include "openhost/values/Text.h"

namespace openhost {

namespace {

constexpr ASInt16 kNewestVersion = 4;
constexpr ASInt32 kNoPage = -1;
constexpr double kFixedUnit = 65536;
constexpr std::size_t kLongestCountedWord = std::numeric_limits<ASUns8>::max();
constexpr ASUns32 kFirstGroup = 0, kSecondGroup = 1;

struct HeldFont {
    std::string name;
};

struct HeldStyle {
    HeldFont* font = nullptr;
    double size = 0;
};

struct HeldWord {
    const PageWord* word = nullptr;
    HeldStyle* style = nullptr;
};

/// Shows the document as it was when the finder was made. Words live until the next page is asked for.
class CWordFinder {
public:
    CWordFinder(PDDoc document, const WordOptions& options, bool unicode)
        : m_document(document), m_fonts(options.fonts), m_unicode(unicode)
    {
        CDocuments& documents = Part<CDocuments>();
        CHostDocument& held = documents.At(document);
        Translated([&] { m_text.emplace(held.pdf, options, documents.textCache.get()); });
        ++held.acquireCount;
    }
    CWordFinder(const CWordFinder&) = delete;
    CWordFinder& operator=(const CWordFinder&) = delete;
    ~CWordFinder()
    {
        if (Part<CDocuments>().Known(m_document)) --DocumentAt(m_document).acquireCount;
    }

    int PageCount() const { return m_text->PageCount(); }
    bool IsUnicode() const { return m_unicode; }
    ASInt32 ListedPage() const { return m_listedPage; }

    /// Makes the list of a page; every word of the former one is gone.
    std::vector<PDWord>& List(int page0);
    void Unlist();
    PDWord Word(ASInt32 index) const
    {
        const bool exists = index >= 0 && static_cast<std::size_t>(index) < m_order.size();
        return exists ? m_order[static_cast<std::size_t>(index)] : nullptr;
    }
    /// The word of the list behind a handle; null when it is none of them.
    const HeldWord* Find(const void* handle) const
    {
        const auto* const word = static_cast<const HeldWord*>(handle);
        const bool isOne = !m_held.empty() && !std::less<>()(word, m_held.data()) &&
                           std::less<>()(word, m_held.data() + m_held.size());
        return isOne ? word : nullptr;
    }
    /// Where each unit of a word of the list stands. Read once more when only words were kept.
    std::span<const PageBox> UnitsOf(const HeldWord& word);

private:
    HeldStyle* StyleOf(const PageWord& word);

    PDDoc m_document;
    bool m_fonts, m_unicode;
    std::optional<CDocumentWords> m_text;
    CPageWords m_page, m_pageWithUnits;
    std::vector<HeldWord> m_held;
    std::vector<PDWord> m_order;
    ASInt32 m_listedPage = kNoPage;
    std::map<std::string, PDFont, std::less<>> m_fontHandles;
    std::map<std::pair<PDFont, double>, PDStyle> m_styles;
};

struct CWordObjects {
    CHandles<HeldFont, PDFont> fonts{"font"};
    CHandles<HeldStyle, PDStyle> styles{"style"};
    CHandles<CWordFinder, PDWordFinder> finders{"word finder"};
};

CWordFinder& FinderAt(PDWordFinder finder) { return Part<CWordObjects>().finders.At(finder); }

/// A word in the list of its finder.
struct ListedWord {
    CWordFinder& finder;
    const HeldWord& held;
};

ListedWord ListedWordAt(PDWord handle)
{
    CWordFinder* holder = nullptr;
    Part<CWordObjects>().finders.ForEach([&](CWordFinder& finder) {
        if (finder.Find(handle)) holder = &finder;
    });
    Require(holder != nullptr, "not a living word");
    return {*holder, *holder->Find(handle)};
}

const PageWord& WordAt(PDWord word) { return *ListedWordAt(word).held.word; }

/// Fonts and styles are few and stay until the host ends.
HeldStyle* CWordFinder::StyleOf(const PageWord& word)
{
    CWordObjects& objects = Part<CWordObjects>();
    auto known = m_fontHandles.find(word.fontName);
    if (known == m_fontHandles.end()) {
        const std::string name(word.fontName);
        known = m_fontHandles.emplace(name, objects.fonts.Add(std::make_unique<HeldFont>(HeldFont{name}))).first;
    }
    const PDFont font = known->second;
    PDStyle& style = m_styles[{font, word.fontSize}];
    if (!style)
        style = objects.styles.Add(std::make_unique<HeldStyle>(HeldStyle{&objects.fonts.At(font), word.fontSize}));
    return &objects.styles.At(style);
}

void CWordFinder::Unlist()
{
    m_order.clear();
    m_held.clear();
    m_listedPage = kNoPage;
}

std::vector<PDWord>& CWordFinder::List(int page0)
{
    if (page0 < 0 || page0 >= PageCount()) Raise(genErrBadParm, "there is no page " + std::to_string(page0 + 1));
    Unlist();
    m_page = Translated([&] { return m_text->Page(page0); });
    m_pageWithUnits = {};
    m_held.reserve(m_page.size());
    m_order.reserve(m_page.size());
    for (const PageWord& word : m_page) {
        m_held.push_back({&word, m_fonts ? StyleOf(word) : nullptr});
        m_order.push_back(reinterpret_cast<PDWord>(&m_held.back()));
    }
    m_listedPage = page0;
    return m_order;
}

std::span<const PageBox> CWordFinder::UnitsOf(const HeldWord& word)
{
    if (!word.word->units.empty() || word.word->text.empty()) return word.word->units;
    if (m_pageWithUnits.size() == 0)
        m_pageWithUnits = Translated([&] { return m_text->PageWithUnits(m_listedPage); });
    const auto index = static_cast<std::size_t>(&word - m_held.data());
    return index < m_pageWithUnits.size() ? m_pageWithUnits[index].units : std::span<const PageBox>();
}

PDWordFinder NewFinder(PDDoc document, const WordOptions& options, bool unicode)
{
    return Part<CWordObjects>().finders.Add(std::make_unique<CWordFinder>(document, options, unicode));
}

PDWordFinder CreateFinder(PDDoc document, ASInt16, ASBool unicode, PDWordFinderConfig config)
{
    WordOptions options;
    if (config) {
        Require(config->recSize >= offsetof(PDWordFinderConfigRec, decomposeTbl), "an unusable record for words");
        options = {.fonts = !config->noStyleInfo,
                   .joinHyphenated = !config->noHyphenDetection,
                   .dissolveLigatures = !config->noLigatureExp};
    }
    return NewFinder(document, options, unicode != 0);
}

PDWordFinder CreateUnicodeFinder(PDDoc document, ASInt16, ASUns16, void*) { return NewFinder(document, {}, true); }

ASInt16 LatestVersion(PDWordFinder) { return kNewestVersion; }

void DestroyFinder(PDWordFinder finder)
{
    FinderAt(finder).Unlist();
    (void)Part<CWordObjects>().finders.Take(finder);
}

/// The order of the file is not known here, so that every table has the order in which the page is read.
void AcquireList(PDWordFinder finder, ASInt32 page0, PDWord* first, PDWord** sorted, PDWord** reading, ASInt32* count)
{
    CWordFinder& held = FinderAt(finder);
    Require(held.ListedPage() == kNoPage, "the word finder still has the list of another page");
    auto& order = held.List(page0);
    if (first) *first = order.empty() ? nullptr : order.front();
    for (PDWord** table : {sorted, reading})
        if (table) *table = order.data();
    if (count) *count = static_cast<ASInt32>(order.size());
}

void ReleaseList(PDWordFinder finder, ASInt32 page0)
{
    CWordFinder& held = FinderAt(finder);
    Require(held.ListedPage() == page0, "the word finder has no list of that page");
    held.Unlist();
}

ASBool EnumWords(PDWordFinder finder, ASInt32 page0, PDWordProc procedure, void* clientData)
{
    Require(procedure != nullptr, "no procedure to call");
    const bool all = page0 == PDAllPages;
    const int last = all ? FinderAt(finder).PageCount() - 1 : page0;
    for (int page = all ? 0 : page0; page <= last; ++page) {
        const auto order = FinderAt(finder).List(page);  // a copy: the procedure may ask for another page
        for (const PDWord word : order)
            if (!CallPlugIn(procedure, finder, word, page, clientData)) return FinderAt(finder).Unlist(), ASBool{0};
        FinderAt(finder).Unlist();
    }
    return 1;
}

PDWord NthWord(PDWordFinder finder, ASInt32 index) { return FinderAt(finder).Word(index); }

/// As a Unicode finder gives it: UTF-16 with the higher byte first, and the space behind the word.
std::string BytesOf(const PageWord& word)
{
    return BytesOfUtf16(std::u16string(word.text) + (word.spaceAfter || word.endsLine ? u" " : u""), true);
}

ASUns8 WordLength(PDWord word)
{
    return static_cast<ASUns8>(std::min(BytesOf(WordAt(word)).size(), kLongestCountedWord));
}

void WordString(PDWord word, char* buffer, ASInt32 size)
{
    Require(buffer != nullptr && size >= 0, "no room for a word");
    const std::string bytes = BytesOf(WordAt(word));
    const std::size_t room = static_cast<std::size_t>(size), length = std::min(bytes.size(), room);
    std::memcpy(buffer, bytes.data(), length);
    std::memset(buffer + length, 0, std::min<std::size_t>(room - length, 2));
}

void WordText(PDWord word, ASUns32, ASText text) { TextAt(text).Set(std::u16string(WordAt(word).text)); }

ASUns16 Attributes(PDWord handle)
{
    const PageWord& word = WordAt(handle);
    unsigned bits = 0;
    const auto set = [&](bool on, unsigned bit) { bits |= on ? bit : 0; };
    for (std::size_t at = 0; at < word.text.size();) {
        const char32_t c = NextUtf16(word.text, at);
        const bool digit = DirectionOf(c) == Direction::Number;
        set(IsLetter(c), WXE_HAS_LETTER);
        set(IsLetter(c) && LowerCased(c) != c, WXE_HAS_UPPERCASE);
        set(digit, WXE_HAS_DIGIT);
        set(!IsLetter(c) && !digit, WXE_HAS_NONALPHANUM | WXE_HAS_PUNCTUATION);
        set(c == '-', WXE_HAS_HYPHEN);
        set(c == kReplacementCharacter, WXE_HAS_UNMAPPED_CHAR);
    }
    set(word.wasHyphenated, WXE_HAS_SOFT_HYPHEN);
    set(word.hasLigature, WXE_HAS_LIGATURE);
    set(word.isRotated, WXE_ROTATED);
    set(word.spaceAfter, WXE_ADJACENT_TO_SPACE);
    set(word.endsLine, WXE_LAST_WORD_ON_LINE);
    return static_cast<ASUns16>(bits);
}

ASUns16 AttributesOfGroup(PDWord word, ASUns32 group)
{
    if (group == kFirstGroup) return Attributes(word);
    if (group != kSecondGroup) return 0;
    return static_cast<ASUns16>(WXE_WORD_IS_UNICODE | (WordAt(word).isRightToLeft ? WXE_REVERSE_DIRECTION : 0));
}

ASBool IsRotated(PDWord word) { return WordAt(word).isRotated; }

ASFixed Fixed(double units)
{
    constexpr double kMost = std::numeric_limits<ASFixed>::max();
    return static_cast<ASFixed>(std::clamp(std::round(units * kFixedUnit), -kMost, kMost));
}

ASFixedQuad QuadOf(const PageBox& box)
{
    const ASFixed left = Fixed(box.left), right = Fixed(box.right), top = Fixed(box.top), bottom = Fixed(box.bottom);
    return {.tl = {left, top}, .tr = {right, top}, .bl = {left, bottom}, .br = {right, bottom}};
}

ASInt16 QuadCount(PDWord word) { return static_cast<ASInt16>(WordAt(word).boxes.size()); }

ASBool NthQuad(PDWord handle, ASInt16 index, ASFixedQuad* quad)
{
    const auto boxes = WordAt(handle).boxes;
    if (!quad || index < 0 || static_cast<std::size_t>(index) >= boxes.size()) return 0;
    *quad = QuadOf(boxes[static_cast<std::size_t>(index)]);
    return 1;
}

ASBool CharacterQuad(PDWord handle, ASUns32 byte, ASFixedQuad* quad)
{
    const ListedWord word = ListedWordAt(handle);
    const auto boxes = word.finder.UnitsOf(word.held);
    const std::size_t unit = byte / sizeof(char16_t);
    if (!quad || unit >= boxes.size()) return 0;
    *quad = QuadOf(boxes[unit]);
    return 1;
}

/// A word has the style of its first letter here.
ASInt16 StyleTransitions(PDWord word, ASInt16* offsets, ASInt16 size)
{
    (void)WordAt(word);
    if (offsets && size > 0) *offsets = 0;
    return 1;
}

PDStyle NthStyle(PDWordFinder, PDWord word, ASInt32 index)
{
    const HeldStyle* const style = ListedWordAt(word).held.style;
    return index == 0 && style ? CHandles<HeldStyle, PDStyle>::HandleOf(*style) : nullptr;
}

PDFont StyleFont(PDStyle style)
{
    return CHandles<HeldFont, PDFont>::HandleOf(*Part<CWordObjects>().styles.At(style).font);
}

ASFixed StyleSize(PDStyle style) { return Fixed(Part<CWordObjects>().styles.At(style).size); }

ASInt32 FontName(PDFont font, char* buffer, ASInt32 size)
{
    const std::string& name = Part<CWordObjects>().fonts.At(font).name;
    if (buffer && size > 0) {
        const std::size_t length = std::min(name.size(), static_cast<std::size_t>(size) - 1);
        std::memcpy(buffer, name.data(), length);
        buffer[length] = 0;
    }
    return static_cast<ASInt32>(name.size());
}

}  // namespace

void OfferWordSlots(CTables& tables)
{
    OFFER(tables, PDModel, PDDocCreateWordFinderEx, CreateFinder);
    OFFER(tables, PDModel, PDDocCreateWordFinderUCS, CreateUnicodeFinder);
    OFFER(tables, PDModel, PDWordFinderGetLatestAlgVersion, LatestVersion);
    OFFER(tables, PDModel, PDWordFinderDestroy, DestroyFinder);
    OFFER(tables, PDModel, PDWordFinderAcquireWordList, AcquireList);
    OFFER(tables, PDModel, PDWordFinderReleaseWordList, ReleaseList);
    OFFER(tables, PDModel, PDWordFinderEnumWords, EnumWords);
    OFFER(tables, PDModel, PDWordFinderGetNthWord, NthWord);
    OFFER(tables, PDModel, PDWordGetLength, WordLength);
    OFFER(tables, PDModel, PDWordGetString, WordString);
    OFFER(tables, PDModel, PDWordGetASText, WordText);
    OFFER(tables, PDModel, PDWordGetAttr, Attributes);
    OFFER(tables, PDModel, PDWordGetAttrEx, AttributesOfGroup);
    OFFER(tables, PDModel, PDWordIsRotated, IsRotated);
    OFFER(tables, PDModel, PDWordGetNumQuads, QuadCount);
    OFFER(tables, PDModel, PDWordGetNthQuad, NthQuad);
    OFFER(tables, PDModel, PDWordGetCharQuad, CharacterQuad);
    OFFER(tables, PDModel, PDWordGetStyleTransition, StyleTransitions);
    OFFER(tables, PDModel, PDWordGetNthCharStyle, NthStyle);
    OFFER(tables, PDModel, PDStyleGetFont, StyleFont);
    OFFER(tables, PDModel, PDStyleGetFontSize, StyleSize);
    OFFER(tables, PDModel, PDFontGetName, FontName);
}

}  // namespace openhost
