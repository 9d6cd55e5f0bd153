#include "openhost/pdf/PageWords.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "base/Unicode.h"

namespace openhost {
namespace {

constexpr char32_t kSoftHyphen = 0xAD, kHyphen = 0x2010;
constexpr double kTouching = 0.25;  // of the height of the letters: a gap that is no space
constexpr double kSameLine = 0.5;   // of the lower of two pieces stands beside the other one

/// A character as it stands on a line.
struct Glyph {
    char32_t character = ' ';
    ShownBox box;
    const TextPiece* piece = nullptr;  // null for the space between two pieces
};

using Line = std::vector<Glyph>;

/// The box turned back so that its letters stand upright, for comparing pieces of one line.
ShownBox Upright(const ShownBox& box, int rotation)
{
    switch (rotation % 4) {
        case 1:
            return {box.top, -box.right, box.bottom, -box.left};
        case 2:
            return {-box.right, -box.bottom, -box.left, -box.top};
        case 3:
            return {-box.bottom, box.left, -box.top, box.right};
        default:
            return box;
    }
}

/// Whether a piece goes on where the one before it ends.
bool ContinuesLine(const TextPiece& former, const TextPiece& next)
{
    if (former.rotation != next.rotation) return false;
    if (former.spaceAfter) return true;
    const ShownBox one = Upright(former.box, former.rotation), other = Upright(next.box, next.rotation);
    const double lower = std::min(one.Height(), other.Height());
    const double beside = std::min(one.bottom, other.bottom) - std::max(one.top, other.top);
    return beside > kSameLine * lower && std::abs(other.left - one.right) <= kTouching * lower;
}

std::vector<Line> LinesOf(const std::vector<TextPiece>& pieces)
{
    std::vector<Line> lines;
    const TextPiece* former = nullptr;
    for (const TextPiece& piece : pieces) {
        if (!former || !ContinuesLine(*former, piece)) lines.emplace_back();
        for (std::size_t i = 0; i < piece.text.size(); ++i)
            lines.back().push_back({piece.text[i], piece.boxes[i], &piece});
        if (piece.spaceAfter) lines.back().push_back({U' ', {}, nullptr});
        former = &piece;
    }
    return lines;
}

/// Turns each run of characters of one direction around, together with what is neutral inside it. A number runs from
/// left to right in either script.
void TurnRuns(Line& line, Direction direction)
{
    const auto belongs = [&](const Glyph& glyph) {
        const Direction own = DirectionOf(glyph.character);
        return own == direction || (direction == Direction::LeftToRight && own == Direction::Number);
    };
    for (auto begin = line.begin(); begin != line.end();) {
        begin = std::find_if(begin, line.end(), belongs);
        auto end = begin;
        for (auto at = begin; at != line.end(); ++at) {
            if (belongs(*at))
                end = at + 1;
            else if (DirectionOf(at->character) != Direction::Neutral)
                break;
        }
        std::reverse(begin, end);
        begin = end;
    }
}

/// From the order in which characters stand, left to right, to the one in which they are read. Answers whether the
/// line as a whole runs from right to left.
bool PutIntoReadingOrder(Line& line)
{
    const auto count = [&](Direction direction) {
        return std::count_if(line.begin(), line.end(),
                             [&](const Glyph& glyph) { return DirectionOf(glyph.character) == direction; });
    };
    const auto fromRight = count(Direction::RightToLeft);
    if (fromRight == 0) return false;
    if (fromRight < count(Direction::LeftToRight)) {
        TurnRuns(line, Direction::RightToLeft);
        return false;
    }
    std::reverse(line.begin(), line.end());
    TurnRuns(line, Direction::LeftToRight);
    return true;
}

PageBox Unturned(const ShownBox& box, const PageView& view)
{
    const PageBox& crop = view.crop;
    switch (view.rotation) {
        case 90:
            return {crop.left + box.top, crop.bottom + box.left, crop.left + box.bottom, crop.bottom + box.right};
        case 180:
            return {crop.right - box.right, crop.bottom + box.top, crop.right - box.left, crop.bottom + box.bottom};
        case 270:
            return {crop.right - box.bottom, crop.top - box.right, crop.right - box.top, crop.top - box.left};
        default:
            return {crop.left + box.left, crop.top - box.bottom, crop.left + box.right, crop.top - box.top};
    }
}

double WholeFraction(double units)
{
    constexpr double kFractions = 65536;
    return std::round(units * kFractions) / kFractions;
}

PageBox InUserSpace(const ShownBox& box, const PageView& view)
{
    const PageBox exact = Unturned(box, view);
    return {WholeFraction(exact.left), WholeFraction(exact.bottom), WholeFraction(exact.right),
            WholeFraction(exact.top)};
}

PageBox Around(const PageBox& one, const PageBox& other)
{
    return {std::min(one.left, other.left), std::min(one.bottom, other.bottom), std::max(one.right, other.right),
            std::max(one.top, other.top)};
}

bool IsHyphen(char32_t character) { return character == '-' || character == kSoftHyphen || character == kHyphen; }

/// Collects the words of a page, line by line.
class CWordCollector {
public:
    CWordCollector(const PageView& view, const WordOptions& options) : m_view(view), m_options(options) {}

    void AddLine(Line line)
    {
        const bool fromRight = PutIntoReadingOrder(line);
        const bool goesOn = ContinuesWord(line);
        bool first = true;
        for (auto at = line.begin(); at != line.end();) {
            if (IsSpace(at->character)) {
                ++at;
                continue;
            }
            const auto end =
                std::find_if(at, line.end(), [](const Glyph& glyph) { return IsSpace(glyph.character); });
            if (!first || !goesOn) m_words.BeginWord();
            AddToLast(at, end, fromRight);
            m_words.Facts().spaceAfter = end != line.end();
            first = false;
            at = end;
        }
        if (!first) {
            m_words.Facts().endsLine = true;
            m_words.Facts().spaceAfter = false;
        }
    }

    CPageWords Take() { return m_words.Finish(); }

private:
    static bool IsSpace(char32_t character) { return IsWhiteSpace(character) || character == 0; }

    /// Whether the last word was divided here; takes its hyphen away then.
    bool ContinuesWord(const Line& line)
    {
        const auto first =
            std::find_if(line.begin(), line.end(), [](const Glyph& g) { return !IsSpace(g.character); });
        if (!m_options.joinHyphenated || m_words.IsEmpty() || first == line.end()) return false;
        const std::u16string_view last = m_words.Text();
        if (last.size() < 2 || !IsHyphen(last.back()) || !IsLetter(last[last.size() - 2])) return false;
        const bool goesOnSmall = IsLetter(first->character) && UpperCased(first->character) != first->character;
        if (last.back() != kSoftHyphen && !goesOnSmall) return false;
        m_words.TakeLastUnit();
        m_words.Facts().wasHyphenated = true;
        m_words.Facts().endsLine = false;
        return true;
    }

    void AddToLast(Line::iterator begin, Line::iterator end, bool fromRight)
    {
        std::optional<PageBox> around;
        for (auto at = begin; at != end; ++at) {
            const PageBox box = InUserSpace(at->box, m_view);
            around = around ? Around(*around, box) : box;
            AddCharacter(at->character, box);
        }
        m_words.AddBox(*around);
        WordFacts& facts = m_words.Facts();
        facts.isRightToLeft = fromRight;
        const auto inPiece = std::find_if(begin, end, [](const Glyph& glyph) { return glyph.piece != nullptr; });
        if (inPiece == end || m_words.HasFont()) return;
        facts.isRotated = inPiece->piece->rotation != 0;
        facts.fontSize = WholeFraction(inPiece->piece->fontSize);
        if (!inPiece->piece->fontName.empty()) m_words.SetFont(inPiece->piece->fontName);
    }

    void AddCharacter(char32_t character, const PageBox& box)
    {
        m_letters.assign(1, character);
        if (m_options.dissolveLigatures) m_letters = WithoutPresentationForm(character);
        m_words.Facts().hasLigature |= m_letters.size() > 1;
        for (const char16_t unit : Utf32ToUtf16(m_letters)) {
            m_words.AddUnit(unit);
            m_words.AddUnitBox(box);
        }
    }

    PageView m_view;
    WordOptions m_options;
    CPageWordsBuilder m_words;
    std::u32string m_letters;  // of the present character; kept for its memory
};

}  // namespace

void CPageWordsBuilder::BeginWord()
{
    m_words.push_back({m_page.m_text.size(), m_page.m_units.size(), m_page.m_boxes.size()});
}

void CPageWordsBuilder::SetFont(std::string_view name)
{
    auto& fonts = m_page.m_fonts;
    const auto known = std::find(fonts.rbegin(), fonts.rend(), name);
    m_words.back().font = known != fonts.rend() ? &*known : &fonts.emplace_back(name);
}

std::u16string_view CPageWordsBuilder::Text() const
{
    const std::size_t begin = m_words.back().text;
    return {m_page.m_text.data() + begin, m_page.m_text.size() - begin};
}

void CPageWordsBuilder::TakeLastUnit()
{
    m_page.m_text.pop_back();
    m_page.m_units.pop_back();
}

CPageWords CPageWordsBuilder::Finish()
{
    m_words.push_back({m_page.m_text.size(), m_page.m_units.size(), m_page.m_boxes.size()});
    m_page.m_words.reserve(m_words.size() - 1);
    for (std::size_t i = 0; i + 1 < m_words.size(); ++i) {
        const Word &word = m_words[i], &next = m_words[i + 1];
        m_page.m_words.push_back({word.facts,
                                  {m_page.m_text.data() + word.text, next.text - word.text},
                                  {m_page.m_units.data() + word.unit, next.unit - word.unit},
                                  {m_page.m_boxes.data() + word.box, next.box - word.box},
                                  word.font ? std::string_view(*word.font) : std::string_view()});
    }
    return std::move(m_page);
}

CPageWords WordsOf(const std::vector<TextPiece>& pieces, const PageView& view, const WordOptions& options)
{
    CWordCollector collector(view, options);
    for (Line& line : LinesOf(pieces)) collector.AddLine(std::move(line));
    return collector.Take();
}

}  // namespace openhost
