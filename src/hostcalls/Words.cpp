#include "hostcalls/Words.h"

#include <algorithm>
#include <array>

#include "base/Unicode.h"
#include "hostcalls/Cab.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"

namespace {

constexpr ASInt16 kNewestVersion = 0;
constexpr double kFixedOne = 65536;
constexpr std::size_t kLongestFontName = 256;

PageRect RectOf(const ASFixedQuad& quad)
{
    const auto [left, right] = std::minmax({quad.tl.h, quad.tr.h, quad.bl.h, quad.br.h});
    const auto [bottom, top] = std::minmax({quad.tl.v, quad.tr.v, quad.bl.v, quad.br.v});
    return {left / kFixedOne, bottom / kFixedOne, right / kFixedOne, top / kFixedOne};
}

/// Takes away the word breaks that a host gives with its words; answers whether there were any.
bool RemoveBreaks(std::u16string& text)
{
    const std::size_t length = text.size();
    while (!text.empty() && (IsWhiteSpace(text.back()) || text.back() == 0)) text.pop_back();
    return text.size() != length;
}

}  // namespace

CHostWordFinder::CHostWordFinder(PDDoc document, Fonts fonts) : m_fonts(fonts == Fonts::Yes)
{
    PDWordFinderConfigRec config{};
    config.recSize = sizeof config;
    config.noStyleInfo = !m_fonts;
    m_finder = HostCall(HOST_SLOT(PDModel, PDDocCreateWordFinderEx), document, kNewestVersion, ASBool{true}, &config);
    if (!m_finder) hostcalls::ThrowHostError(genErrGeneral);
}

CHostWordFinder::~CHostWordFinder()
{
    hostcalls::Quietly([this] { HostCall(HOST_SLOT(PDModel, PDWordFinderDestroy), m_finder); });
}

std::vector<HostWord> CHostWordFinder::Words(int page0) const
{
    PDWord first = nullptr;
    PDWord* reading = nullptr;
    ASInt32 count = 0;
    HostCall(HOST_SLOT(PDModel, PDWordFinderAcquireWordList), m_finder, page0, &first, nullptr, &reading, &count);
    const hostcalls::CAtEnd release([&] {
        hostcalls::Quietly([&] { HostCall(HOST_SLOT(PDModel, PDWordFinderReleaseWordList), m_finder, page0); });
    });
    std::vector<HostWord> words;
    words.reserve(static_cast<std::size_t>(std::max<ASInt32>(count, 0)));
    for (ASInt32 i = 0; i < count; ++i) {
        const PDWord word = reading ? reading[i] : HostCall(HOST_SLOT(PDModel, PDWordFinderGetNthWord), m_finder, i);
        if (word) words.push_back(WordOf(word));
    }
    return words;
}

HostWord CHostWordFinder::WordOf(PDWord word) const
{
    HostWord found;
    HostCall(HOST_SLOT(PDModel, PDWordGetASText), word, ASUns32{0}, m_text.Get());
    found.text = Utf16FromText(m_text.Get());
    const unsigned attributes = HostCall(HOST_SLOT(PDModel, PDWordGetAttr), word);
    const bool breaks = RemoveBreaks(found.text);
    found.endsLine = (attributes & WXE_LAST_WORD_ON_LINE) != 0;
    found.spaceAfter = breaks || (attributes & WXE_ADJACENT_TO_SPACE) != 0;
    const int quads = HostCall(HOST_SLOT(PDModel, PDWordGetNumQuads), word);
    for (int i = 0; i < quads; ++i) {
        ASFixedQuad quad{};
        if (HostCall(HOST_SLOT(PDModel, PDWordGetNthQuad), word, static_cast<ASInt16>(i), &quad))
            found.boxes.push_back(RectOf(quad));
    }
    if (m_fonts) AddStyle(word, found);
    return found;
}

/// The style of its first letter stands for the word.
void CHostWordFinder::AddStyle(PDWord word, HostWord& found) const
{
    const PDStyle style = HostCall(HOST_SLOT(PDModel, PDWordGetNthCharStyle), m_finder, word, ASInt32{0});
    if (!style) return;
    found.fontSize = HostCall(HOST_SLOT(PDModel, PDStyleGetFontSize), style) / kFixedOne;
    const PDFont font = HostCall(HOST_SLOT(PDModel, PDStyleGetFont), style);
    if (!font) return;
    std::array<char, kLongestFontName> name{};
    HostCall(HOST_SLOT(PDModel, PDFontGetName), font, name.data(), static_cast<ASInt32>(name.size() - 1));
    found.font = name.data();
}
