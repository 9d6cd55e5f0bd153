#include <gtest/gtest.h>

#include "naming/NameText.h"

namespace {

TEST(NameText, NumbersAndLettersFollowThePlaceInTheList)
{
    const struct {
        int index, start, step, pad;
        const char* number;
        const char* letter;
    } rows[] = {{0, 1, 1, 0, "1", "A"},
                {25, 1, 10, 4, "0251", "Z"},
                {26, 5, -1, -3, "-21", "AA"},
                {27, 0, -1, 3, "-027", "BB"},
                {52, 2147483647, 2147483647, 0, "113816633291", "AAA"},
                {1, 1, 1, 50, "0000000000000000000000000000000000000002", "B"}};
    for (const auto& row : rows) {
        CFileNamePart part;
        part.startingNumber = row.start;
        part.increment = row.step;
        part.padWithZeroes = row.pad;
        EXPECT_EQ(NumberText(part, row.index), row.number) << row.index;
        EXPECT_EQ(LetterText(row.index), row.letter) << row.index;
    }
    EXPECT_EQ(LetterText(2147483647).size(), 255U);
}

TEST(NameText, RulesApplyInOrderToTheWholeName)
{
    const auto rules = CNameRules::From({CFileRenameRule::Predefined(3), CFileRenameRule::Predefined(5),
                                         CFileRenameRule::Predefined(9, "(\\d+)_(\\w)", "\\2\\1"),
                                         CFileRenameRule::Predefined(8, ".", "-"), CFileRenameRule::Predefined(7)});
    ASSERT_TRUE(rules.Ok());
    EXPECT_EQ(*rules->Apply("_a  12 b.c"), "a_b12-c");
    EXPECT_FALSE(CNameRules::From({CFileRenameRule::Predefined(9, "(", "x")}).Ok());
    EXPECT_EQ(InCase("\xC3\x84 Stra\xC3\x9F"
                     "e",
                     NameCase::Lower),
              "\xC3\xA4 stra\xC3\x9F"
              "e");
}

TEST(NameText, NamesAreValidOnEveryFileSystem)
{
    const std::string umlauts(512, 'x');
    std::string accents, wide;
    for (int i = 0; i < 200; ++i) accents += "e\xCC\x81";  // e and a combining accent: two characters
    for (int i = 0; i < 240; ++i) wide += "\xE2\x82\xAC";  // three bytes
    std::string euros, marked;
    for (int i = 0; i < 83; ++i) euros += "\xE2\x82\xAC";  // 249 of 250 bytes
    for (int i = 0; i < 2; ++i) marked += "e\xCC\x81";
    const struct {
        std::string text;
        const char* extension;
        std::size_t most;
        std::string name;
    } rows[] = {
        {"a/b\\c:d*e?f\"g<h>i|j\tk\r\nl", "pdf", 100, "abcdefghijkl.pdf"},
        {" Dr. . ", "pdf", 100, "Dr.pdf"},
        {"...", "pdf", 100, ""},
        {"// ", "pdf", 100, ""},
        {std::string("a\0b\x01\x7F", 5), "", 100, "ab"},
        {"con", "pdf", 100, "con_.pdf"},
        {"LPT1.x", "pdf", 100, "LPT1_.x.pdf"},
        {"COM\xC2\xB2", "pdf", 100, "COM\xC2\xB2_.pdf"},
        {"COM10", "pdf", 100, "COM10.pdf"},
        {umlauts, "pdf", 256, std::string(240, 'x') + ".pdf"},
        {"abcdef", "PDF", 3, "abc.PDF"},
        {accents, "pdf", 5, marked + ".pdf"},
        {wide, "pdf", 256, euros + ".pdf"},
        {"a\xFF\x62", "pdf", 100, "a\xEF\xBF\xBD\x62.pdf"},
        {"abc", "pdf", 0, ""},
    };
    for (const auto& row : rows) EXPECT_EQ(ValidFileName(row.text, row.extension, row.most), row.name) << row.text;
}

}  // namespace
