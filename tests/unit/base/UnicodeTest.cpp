#include <gtest/gtest.h>

#include "base/Names.h"
#include "base/Unicode.h"

TEST(Unicode, EveryCharacterSurvivesEachForm)
{
    for (char32_t c = 1; c <= 0x10FFFF; c += c < 0x11000 ? 1 : 0x101) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        const std::string utf8 = Utf32ToUtf8(std::u32string(1, c));
        ASSERT_TRUE(IsValidUtf8(utf8)) << std::hex << static_cast<unsigned>(c);
        ASSERT_EQ(Utf8ToUtf32(utf8), std::u32string(1, c));
        ASSERT_EQ(Utf16ToUtf8(Utf8ToUtf16(utf8)), utf8);
        ASSERT_EQ(Utf16BytesToUtf8(Utf8ToUtf16Bytes(utf8, true), true), utf8);
        ASSERT_EQ(Utf16BytesToUtf8(Utf8ToUtf16Bytes(utf8, false), false), utf8);
    }
}

TEST(Unicode, KnownCharactersHaveTheirKnownBytes)
{
    const struct {
        const char* utf8;
        std::string bigEndian;
    } rows[] = {{"A", {"\0A", 2}},
                {"\xC3\xA4", {"\0\xE4", 2}},
                {"\xE2\x82\xAC", "\x20\xAC"},
                {"\xF0\x9F\x98\x80", {"\xD8\x3D\xDE\x00", 4}}};
    for (const auto& row : rows) EXPECT_EQ(Utf8ToUtf16Bytes(row.utf8, true), row.bigEndian) << row.utf8;
    EXPECT_EQ(Utf8ToUtf16("\xF0\x9F\x98\x80"), u"\U0001F600");
}

TEST(Unicode, EachMalformedSequenceBecomesOneReplacement)
{
    const std::string r = "\xEF\xBF\xBD";
    const struct {
        std::string bytes, clean;
    } rows[] = {
        {"a\x80z", "a" + r + "z"},            // a trailing byte alone
        {"\xC0\xAF", r + r},                  // overlong
        {"\xE0\x80\xAF", r + r + r},          // overlong
        {"\xED\xA0\x80", r + r + r},          // a surrogate
        {"\xF4\x90\x80\x80", r + r + r + r},  // above U+10FFFF
        {"\xF5\xFF", r + r},                  // no lead bytes at all
        {"\xE2\x82", r},                      // cut short at the end
        {"\xF0\x9F\x98"
         "A",
         r + "A"},                                         // cut short before a character
        {"\xE2\xC3\xA4", r + "\xC3\xA4"},                  // a lead byte interrupts
        {std::string("a\0b", 3), std::string("a\0b", 3)},  // NUL is a character
    };
    for (const auto& row : rows) {
        EXPECT_EQ(SanitizeUtf8(row.bytes), row.clean);
        EXPECT_EQ(Utf32ToUtf8(Utf8ToUtf32(row.bytes)), row.clean);
        EXPECT_EQ(Utf16ToUtf8(Utf8ToUtf16(row.bytes)), row.clean);
        EXPECT_EQ(IsValidUtf8(row.bytes), row.bytes == row.clean);
    }
}

TEST(Unicode, LoneSurrogatesAndOddBytesAreReplaced)
{
    const std::string r = "\xEF\xBF\xBD";
    EXPECT_EQ(Utf16ToUtf8(std::u16string{0xD83D, 'a'}), r + "a");
    EXPECT_EQ(Utf16ToUtf8(std::u16string{0xDE00, 0xD83D}), r + r);
    EXPECT_EQ(Utf16BytesToUtf8(std::string("\0a\0", 3), true), "a" + r);
    EXPECT_EQ(Utf32ToUtf8(std::u32string{0xD800, 0x110000}), r + r);
}

TEST(Unicode, LetterCaseOfNamesIsThatOfAnyLanguage)
{
    const struct {
        const char *name, *lower, *upper;
    } rows[] = {{"Stra\u00DFe \u00C4", "stra\u00DFe \u00E4", "STRA\u00DFE \u00C4"},
                {"\u0394\u03C2 \u0416 \u0547", "\u03B4\u03C2 \u0436 \u0577", "\u0394\u03A3 \u0416 \u0547"},
                {"\u10D0 \uFF21", "\u10D0 \uFF41", "\u1C90 \uFF21"},
                {"A\xC4", "a\xC4", "A\xC4"}};  // no UTF-8
    for (const auto& row : rows) {
        EXPECT_EQ(LowerCasedName(row.name), row.lower);
        EXPECT_EQ(UpperCasedName(row.name), row.upper);
    }
    EXPECT_EQ(MatchedName("BU\u0308RO"), MatchedName("b\u00FCro"));
    EXPECT_EQ(MatchedName("A\xC4"), "a\xC4");
    EXPECT_TRUE(NameComesBefore("a\xC4", "B"));
    EXPECT_TRUE(NameComesBefore("A", "a"));
    EXPECT_TRUE(NameComesBefore("b", "Ba"));
    EXPECT_FALSE(NameComesBefore("\u00E4", "\u00C4"));
}
