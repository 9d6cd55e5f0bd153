#include "base/Text.h"

#include <gtest/gtest.h>

#include <climits>

TEST(Text, TrimmingTakesWhiteSpaceFromTheEndsOnly)
{
    const struct {
        const char *text, *both, *left;
    } rows[] = {{"", "", ""},
                {" \t\r\n\v\f", "", ""},
                {" a b\t", "a b", "a b\t"},
                {"\xC2\xA0x\xC2\xA0", "\xC2\xA0x\xC2\xA0", "\xC2\xA0x\xC2\xA0"}};
    for (const auto& row : rows) {
        EXPECT_EQ(Trim(row.text), row.both) << row.text;
        EXPECT_EQ(TrimLeft(row.text), row.left) << row.text;
    }
}

TEST(Text, QuotesAreRemovedOnceFromEachEnd)
{
    const char* rows[][2] = {{"\"C:\\a b\\c.sequ\"", "C:\\a b\\c.sequ"},
                             {"  \" a \"  ", "a"},
                             {"\"", "\""},
                             {" \" ", "\""},
                             {"\"\"", ""},
                             {"\"\"a\"\"", "\"a\""},
                             {"\"a", "a"},
                             {"a\"", "a"},
                             {"a\"b", "a\"b"},
                             {"", ""}};
    for (const auto& [text, expected] : rows) EXPECT_EQ(RemoveQuotes(text), expected) << text;
}

TEST(Text, SplittingDropsEmptyPieces)
{
    using Pieces = std::vector<std::string>;
    EXPECT_EQ(Split("pdf;tif,jpg", ",;"), (Pieces{"pdf", "tif", "jpg"}));
    EXPECT_EQ(Split(";,pdf,; ,", ",;"), (Pieces{"pdf", " "}));
    EXPECT_EQ(Split("", ",;"), Pieces{});
    EXPECT_EQ(Split("a,b", ""), Pieces{"a,b"});
}

TEST(Text, NumbersAreReadLikeTheCLibraryDoesAndNeverOverflow)
{
    const struct {
        const char* text;
        int value;
    } rows[] = {{"8", 8},
                {" \t-1x", -1},
                {"+7 8", 7},
                {"0x10", 0},
                {"", 0},
                {"abc", 0},
                {"- 1", 0},
                {"--1", 0},
                {"007", 7},
                {"2147483647", INT_MAX},
                {"2147483648", INT_MAX},
                {"-2147483648", INT_MIN},
                {"-99999999999999999999999999999999", INT_MIN},
                {"99999999999999999999999999999999", INT_MAX}};
    for (const auto& row : rows) EXPECT_EQ(ParseDecimal(row.text), row.value) << row.text;
}

TEST(Text, ReplacingDoesNotLookAtWhatItInserted)
{
    EXPECT_EQ(ReplaceAll("a\nb\n", "\n", "\r\n"), "a\r\nb\r\n");
    EXPECT_EQ(ReplaceAll("aaa", "aa", "a"), "aa");
    EXPECT_EQ(ReplaceAll("abc", "", "x"), "abc");
}

TEST(Text, LetterCaseIsThatOfAscii)
{
    EXPECT_EQ(ToLowerAscii("YES\xC3\x84Z@["), "yes\xC3\x84z@[");
    EXPECT_EQ(ToUpperAscii("a.api`{\xC3\xA4"), "A.API`{\xC3\xA4");
    EXPECT_TRUE(EqualsIgnoreCaseAscii("Pdf", "pDF"));
    EXPECT_FALSE(EqualsIgnoreCaseAscii("pdf", "pdfx"));
    EXPECT_FALSE(EqualsIgnoreCaseAscii("@", "`"));
}
