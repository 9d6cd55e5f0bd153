#include <gtest/gtest.h>

#include "base/Unicode.h"
#include "openhost/pdf/PageWords.h"

using namespace openhost;

namespace {

constexpr double kWidth = 10, kHeight = 12;

/// A piece whose letters stand side by side from a place on, as they are seen from left to right.
TextPiece Piece(const std::string& utf8, double left, double top, bool spaceAfter)
{
    TextPiece piece{.text = Utf8ToUtf32(utf8), .boxes = {}, .box = {}, .spaceAfter = spaceAfter};
    double at = left;
    for (std::size_t i = 0; i < piece.text.size(); ++i, at += kWidth)
        piece.boxes.push_back({at, top, at + kWidth, top + kHeight});
    piece.box = {left, top, at, top + kHeight};
    return piece;
}

/// Words with "|" behind those that end a line, and a blank where one divides them.
std::string Shown(const CPageWords& words)
{
    std::string shown;
    for (const PageWord& word : words)
        shown += Utf16ToUtf8(word.text) + (word.endsLine ? "|" : word.spaceAfter ? " " : "+");
    return shown;
}

constexpr PageView kView{{0, 0, 600, 800}, 0};

}  // namespace

TEST(PageWords, AreThoseThatAReaderReads)
{
    const struct {
        std::vector<TextPiece> pieces;
        const char* words;
    } cases[] = {
        {{Piece("one", 0, 0, true), Piece("line", 40, 0, false), Piece("next", 0, 14, false)}, "one line|next|"},
        {{Piece("glu", 0, 0, false), Piece("ed", 30, 0, false)}, "glued|"},
        {{Piece("col", 0, 0, false), Piece("umn", 300, 0, false)}, "col|umn|"},
        {{Piece("exam-", 0, 0, false), Piece("ple", 0, 14, true), Piece("two", 40, 14, false)}, "example two|"},
        {{Piece("exam\u00AD", 0, 0, false), Piece("Ple", 0, 14, false)}, "examPle|"},
        {{Piece("A-", 0, 0, false), Piece("Team", 0, 14, false)}, "A-|Team|"},
        {{Piece("17-", 0, 0, false), Piece("x", 0, 14, false)}, "17-|x|"},
        {{Piece("\uFB01nd", 0, 0, false)}, "find|"},
        {{Piece("\u05D2\u05D1\u05D0", 0, 0, true), Piece("12", 40, 0, false)},  // read from the right
         "12 \u05D0\u05D1\u05D2|"},
        {{Piece("say", 0, 0, true), Piece("\u05D1\u05D0", 40, 0, true), Piece("now", 70, 0, false)},
         "say \u05D0\u05D1 now|"},
    };
    for (const auto& each : cases) EXPECT_EQ(Shown(WordsOf(each.pieces, kView, {})), each.words);
}

TEST(PageWords, KeepTheirPlaces)
{
    const auto words = WordsOf({Piece("ex-", 500, 0, false), Piece("am\uFB01", 0, 20, false)}, kView, {});
    ASSERT_EQ(words.size(), 1U);
    ASSERT_EQ(words[0].boxes.size(), 2U);
    EXPECT_EQ(words[0].boxes[0].left, 500);
    EXPECT_EQ(words[0].boxes[1].top, 780);
    ASSERT_EQ(words[0].units.size(), words[0].text.size());
    EXPECT_EQ(words[0].units[5].left, words[0].units[4].left);  // both letters stand where the ligature does
}
