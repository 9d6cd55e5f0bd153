#include <climits>
#include <random>

#include <gtest/gtest.h>

#include "base/PdfDate.h"
#include "base/Sha256.h"
#include "base/Text.h"
#include "base/Xml.h"
#include "platform/FileDigest.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"

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

TEST(Base64, SkipsWhatIsNotInItsAlphabet)
{
    const struct {
        const char* text;
        const char* bytes;
    } rows[] = {{"RmVycnVsZQ==", "Ferrule"},
                {"RmVy\r\ncnVs\n ZQ", "Ferrule"},
                {"Zg", "f"},
                {"Zm8", "fo"},
                {"Z", ""},
                {"====", ""},
                {"-_Zm9v*", "foo"},
                {"", ""}};
    for (const auto& row : rows) EXPECT_EQ(DecodeBase64(row.text), row.bytes) << row.text;
    EXPECT_EQ(DecodeBase64("AP+/"), std::string("\x00\xFF\xBF", 3));
}

TEST(LineSplitter, LinesDoNotDependOnThePiecesTheyComeIn)
{
    const std::string text = "one\n\ntoo long for it\nlast";
    for (std::size_t piece = 1; piece <= text.size(); ++piece) {
        CLineSplitter splitter(5);
        std::vector<std::string> lines;
        for (std::size_t at = 0; at < text.size(); at += piece) splitter.Add(text.substr(at, piece), lines);
        EXPECT_EQ(lines, (std::vector<std::string>{"one", "", "too l"})) << piece;
        splitter.Finish(lines);
        splitter.Finish(lines);
        EXPECT_EQ(lines.size(), 4u) << piece;
        EXPECT_EQ(lines.back(), "last") << piece;
    }
}

TEST(ByteText, LeavesValidTextAndMarksTheRest)
{
    const struct {
        std::string_view bytes, text;
    } rows[] = {
        {"", ""},
        {"a/b.pdf", "a/b.pdf"},
        {"gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80", "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"x\xFCy", "x\xEF\x9F\xBCy"},
        {"\x80", "\xEF\x9E\x80"},
        {"\xC0\xAF", "\xEF\x9F\x80\xEF\x9E\xAF"},                  // overlong
        {"\xED\xA0\x80", "\xEF\x9F\xAD\xEF\x9E\xA0\xEF\x9E\x80"},  // a surrogate
        {"\xE2\x82", "\xEF\x9F\xA2\xEF\x9E\x82"},                  // cut off
        {"\xEF\x9E\x80", "\xEF\x9F\xAF\xEF\x9E\x9E\xEF\x9E\x80"},  // itself such a character
        {"\xEF\x9D\xBF\xEF\xA0\x80", "\xEF\x9D\xBF\xEF\xA0\x80"},  // its neighbours on both sides
    };
    for (const auto& row : rows) {
        EXPECT_EQ(TextFromBytes(row.bytes), row.text);
        EXPECT_EQ(BytesFromText(row.text), row.bytes);
    }
}

TEST(ByteText, BringsBackAnyBytes)
{
    std::mt19937 random(7);
    // Few values, so that parts of characters meet often.
    constexpr std::string_view kBytes = "\xEF\x9E\x9F\x80\xBF\xC3\xE2\xED\xF0\xF4/a";
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(random() % 8, ' ');
        for (char& byte : bytes) byte = kBytes[random() % kBytes.size()];
        ASSERT_EQ(BytesFromText(TextFromBytes(bytes)), bytes);
    }
}

TEST(Sha256, FilesAndPiecesHaveTheKnownDigests)
{
    const CTemporaryFolder folder;
    const struct {
        std::string bytes;
        const char* digest;
    } rows[] = {{"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
                {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
                {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}};
    for (const auto& row : rows) {
        EXPECT_EQ(platform::Sha256OfFile(folder.Write("file", row.bytes)), row.digest);
        CSha256 pieces;
        for (std::size_t at = 0; at < row.bytes.size(); at += 77) {
            const auto piece = row.bytes.substr(at, 77);
            pieces.Add(piece.data(), piece.size());
        }
        EXPECT_EQ(pieces.Digest(), row.digest);
    }
    platform::FileResult result;
    EXPECT_EQ(platform::Sha256OfFile(folder / "missing", &result), "");
    EXPECT_EQ(platform::ProblemOf(result), platform::FileProblem::Missing);
}

TEST(Xml, TextsComeBackAndReferencesToNothingStay)
{
    const std::string text = "<a & \"b\">'\r\n\t\xF0\x9F\x98\x80";
    EXPECT_EQ(XmlUnescaped(XmlEscaped(text)), text);
    EXPECT_EQ(XmlUnescaped(XmlAttributeValue(text)), text);
    EXPECT_EQ(XmlUnescaped("&#65;&#x42;&amp;lt;"), "AB&lt;");
    for (const char* kept : {"&", "&;", "&nbsp;", "&#;", "&#x110000;", "&#0;", "a & b;", "&#xD800;"})
        EXPECT_EQ(XmlUnescaped(kept), kept);
}

TEST(PdfDate, IsReadFromBothFormsAndRefusedWhenThereIsNoSuchTime)
{
    const std::pair<const char*, const char*> rows[] = {{"D:20240131093000+01'00'", "D:20240131093000+01'00'"},
                                                        {"D:20240131093000+01'00", "D:20240131093000+01'00'"},
                                                        {"20240131", "D:20240131"},
                                                        {"D:2024", "D:2024"},
                                                        {"D:20240131093000Z", "D:20240131093000Z"},
                                                        {"D:20240131093000Z00'00'", "D:20240131093000+00'00'"},
                                                        {"2024-01-31", "D:20240131"},
                                                        {"2024-01", "D:202401"},
                                                        {"2024-01-31T09:30", "D:202401310930"},
                                                        {"2024-01-31 09:30:05-11:45", "D:20240131093005-11'45'"},
                                                        {"2024-02-29T00:00:00Z", "D:20240229000000Z"}};
    for (const auto& [text, date] : rows) EXPECT_EQ(PdfDateFrom(text), date) << text;
    for (const char* text :
         {"", "D:", "D:20", "D:202402301", "2023-02-29", "2024-13", "2024-1-31", "20240131T09:30", "2024-01-31T24:00",
          "2024-01-31T09:30:00+24:00", "2024-01-31+01:00", "D:20240131+01'00'x", "2024-01-31Tt9", "yesterday"})
        EXPECT_EQ(PdfDateFrom(text), std::nullopt) << text;
}
