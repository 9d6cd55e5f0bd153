#include <cerrno>
#include <vector>

#include <gtest/gtest.h>

#include "common/TextFile.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"

namespace {

constexpr TextEncoding kAll[] = {TextEncoding::Ansi, TextEncoding::Utf16BigEndian, TextEncoding::Utf16LittleEndian,
                                 TextEncoding::Utf8};

std::vector<std::string> Lines(const std::string& path)
{
    CTextFileRead file(path);
    std::vector<std::string> lines;
    while (auto line = file.ReadLine()) lines.push_back(*line);
    return lines;
}

}  // namespace

TEST(TextFile, WhatIsWrittenIsReadWhereverTheBufferEnds)
{
    const CTemporaryFolder folder;
    for (const auto encoding : kAll) {
        for (int shift = 0; shift < 8; ++shift) {
            std::string text(static_cast<std::size_t>(shift), '.');
            for (int i = 0; i < 700; ++i) text += "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";
            const auto path = folder / "text";
            CTextFileWrite writer(path, encoding, false);
            writer.Write(text + "\r\nlast\n");
            writer.Close();
            EXPECT_EQ(CTextFileRead(path).Encoding(), encoding);
            EXPECT_EQ(Lines(path), (std::vector<std::string>{text, "last"}))
                << static_cast<int>(encoding) << ' ' << shift;
        }
    }
}

TEST(TextFile, TheMarkTellsTheEncodingAndIsNoText)
{
    const struct {
        std::string bytes;
        TextEncoding encoding;
        std::size_t mark;
        std::vector<std::string> lines;
    } rows[] = {
        {{"\xFE\xFF\0a\0\r\0\n\0b", 10}, TextEncoding::Utf16BigEndian, 2, {"a", "b"}},
        {{"\xFF\xFE"
          "a\0\r\0"
          "b\0",
          8},
         TextEncoding::Utf16LittleEndian,
         2,
         {"a", "b"}},
        {"\xEF\xBB\xBF"
         "a\n\nb",
         TextEncoding::Utf8,
         3,
         {"a", "", "b"}},
        {"\xEF\xBB"
         "a",
         TextEncoding::Ansi,
         0,
         {"\xEF\xBB"
          "a"}},
        {"a\rb\r\n", TextEncoding::Ansi, 0, {"a", "b"}},
        {"\xFE", TextEncoding::Ansi, 0, {"\xFE"}},
        {"", TextEncoding::Ansi, 0, {}},
        {"\n", TextEncoding::Ansi, 0, {""}},
        {"\xFF\xFE", TextEncoding::Utf16LittleEndian, 2, {}},
        {{"\xFE\xFF\0a\0", 5}, TextEncoding::Utf16BigEndian, 2, {"a\xEF\xBF\xBD"}},
        {"\xFE\xFF\xD8\x3D", TextEncoding::Utf16BigEndian, 2, {"\xEF\xBF\xBD"}},
        {"\xEF\xBB\xBF"
         "a\xFF\n",
         TextEncoding::Utf8,
         3,
         {"a\xEF\xBF\xBD"}},
    };
    const CTemporaryFolder folder;
    for (const auto& row : rows) {
        const auto path = folder.Write("text", row.bytes);
        SCOPED_TRACE(testing::PrintToString(row.bytes));
        CTextFileRead file(path);
        EXPECT_EQ(file.Encoding(), row.encoding);
        EXPECT_EQ(file.MarkLength(), row.mark);
        EXPECT_EQ(Lines(path), row.lines);
    }
}

TEST(TextFile, CharactersAreReadOneByOne)
{
    const CTemporaryFolder folder;
    for (const auto encoding : kAll) {
        const auto path = folder / "text";
        CTextFileWrite(path, encoding, false).WriteCharacter(0x1F600);
        CTextFileRead file(path);
        EXPECT_EQ(file.ReadCharacter(), char32_t{0x1F600}) << static_cast<int>(encoding);
        EXPECT_EQ(file.ReadCharacter(), std::nullopt);
    }
}

TEST(TextFile, AppendingContinuesWithoutASecondMark)
{
    const CTemporaryFolder folder;
    for (const auto encoding : kAll) {
        const auto path = folder / "text";
        CTextFileWrite(path, encoding, false).Write("one\n");
        const auto first = FileBytes(path);
        CTextFileWrite(path, encoding, true).Write("two\n");
        EXPECT_TRUE(FileBytes(path).starts_with(first));
        EXPECT_EQ(Lines(path), (std::vector<std::string>{"one", "two"})) << static_cast<int>(encoding);
        CTextFileWrite(path, encoding, false).Write("one\n");
        EXPECT_EQ(FileBytes(path), first) << "without appending the old text goes";
        CTextFileWrite(folder / ("new" + std::to_string(static_cast<int>(encoding))), encoding, true).Write("one\n");
        EXPECT_EQ(FileBytes(folder / ("new" + std::to_string(static_cast<int>(encoding)))), first);
    }
}

TEST(TextFile, FailuresAreToldApart)
{
    const CTemporaryFolder folder;
    EXPECT_EQ(platform::ProblemOf({CTextFileRead(folder / "missing").ErrorNumber()}), platform::FileProblem::Missing);
    EXPECT_EQ(platform::ProblemOf({CTextFileRead(folder.Path()).ErrorNumber()}), platform::FileProblem::IsAFolder);
    EXPECT_FALSE(CTextFileRead(folder.Path()).ReadLine());
    CTextFileWrite writer;
    EXPECT_FALSE(writer.Open(folder.Path(), TextEncoding::Utf8, false));
    EXPECT_FALSE(writer.IsOpen());
    EXPECT_THROW(writer.Write("x"), CTextFileException);
}

TEST(TextFile, AFullDiskIsNoticed)
{
    CTextFileWrite writer;
    if (!writer.Open("/dev/full", TextEncoding::Ansi, false)) GTEST_SKIP() << "no device that is always full";
    EXPECT_THROW(writer.Write(std::string(5000, 'x')), CTextFileException) << "a full disk";
    ASSERT_TRUE(writer.Open("/dev/full", TextEncoding::Ansi, false));
    writer.Write("x");
    EXPECT_THROW(writer.Close(), CTextFileException) << "a full disk noticed at the end";
    EXPECT_FALSE(writer.IsOpen());
}
