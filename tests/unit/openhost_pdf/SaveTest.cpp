#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "SavedPdfs.h"
#include "TestPdfs.h"
#include "Tools.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"

using namespace openhost;

namespace {

/// Larger than what is read into memory when a document is opened.
std::string LargeObject()
{
    constexpr std::size_t kBytes = 17 << 20;
    return "100 0 obj\n<</Length " + std::to_string(kBytes) + ">>\nstream\n" + std::string(kBytes, 'x') +
           "\nendstream\nendobj\n";
}

}  // namespace

TEST(Save, InPlaceContinuesFromTheNewFile)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("a.pdf", SamplePdf(3));
    CPdfDocument document = TitledDocument(path, "first");
    EXPECT_TRUE(document.IsModified());
    document.Save({});
    EXPECT_FALSE(document.IsModified());
    EXPECT_EQ(TitleOf(path), "first");

    document.SetInfo("Title", "second");
    document.Save({.linearise = true});
    EXPECT_TRUE(document.IsLinearised());
    EXPECT_EQ(TitleOf(path), "second");
    EXPECT_EQ(document.PageCount(), 3);
    EXPECT_EQ(folder.EntryCount(), 1u);
}

TEST(Save, ALargeDocumentReplacesTheFileThatItIsReadFrom)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("a.pdf", SamplePdf(2, "", LargeObject()));
    const std::string before = FileBytes(path);
    std::optional<CPdfDocument> opened = TitledDocument(path, "first");
    CPdfDocument& document = *opened;
    {
        const CRefusingOverseer refusing;
        EXPECT_EQ(ProblemOf([&] { document.Save({}); }), PdfProblem::CannotWrite);
    }
    EXPECT_EQ(FileBytes(path), before);
    EXPECT_EQ(document.PageCount(), 2);
    bool told = false;
    document.Save({.beforeReplacing = [&] { told = FileBytes(path) == before; }});
    EXPECT_TRUE(told);
    EXPECT_EQ(TitleOf(path), "first");

    document.SetInfo("Title", "copied");
    document.Save({.copy = true});  // over its own file, which it goes on reading as it was
    EXPECT_EQ(TitleOf(path), "copied");
    document.Save({.path = folder / "b.pdf"});
    EXPECT_EQ(TitleOf(folder / "b.pdf"), "copied");
    EXPECT_EQ(platform::FileSize(folder / "b.pdf"), platform::FileSize(path));

    document.SetInfo("Title", "last");
    document.Save({});
    std::filesystem::remove(folder / "b.pdf");
    document.Save({.path = folder / "c.pdf"});
    EXPECT_EQ(TitleOf(folder / "c.pdf"), "last");
    EXPECT_NE(FileBytes(folder / "c.pdf").find(std::string(1000, 'x')), std::string::npos);
    opened.reset();  // a removed file that somebody has open may keep its name
    EXPECT_EQ(folder.EntryCount(), 2u);
}

TEST(Save, ElsewhereMovesTheDocumentACopyDoesNot)
{
    const CTemporaryFolder folder;
    const std::string a = folder.Write("a.pdf", SamplePdf(1)), b = folder / "b.pdf", c = folder / "c.pdf";
    const std::string before = FileBytes(a);
    CPdfDocument document = TitledDocument(a, "new");
    document.Save({.path = b, .copy = true});
    EXPECT_EQ(document.Path(), a);
    EXPECT_TRUE(document.IsModified());
    document.Save({.path = c});
    EXPECT_EQ(document.Path(), c);
    EXPECT_EQ(FileBytes(a), before);
    EXPECT_EQ(TitleOf(b), "new");
    EXPECT_EQ(TitleOf(c), "new");
}

TEST(Save, SurvivesTheLossOfItsNewFile)
{
    const CTemporaryFolder folder;
    CPdfDocument document = TitledDocument(folder.Write("a.pdf", SamplePdf(2)), "kept");
    StandardSecurity security;
    security.hasUser = true;
    security.userPasswordUtf8 = "open";
    document.SetSecurity(security);
    document.Save({.path = folder / "b.pdf"});
    std::filesystem::remove(folder / "b.pdf");
    EXPECT_EQ(document.PageCount(), 2);
    document.Save({.path = folder / "c.pdf"});
    CPdfDocument again = CPdfDocument::Open(folder / "c.pdf", WithPassword("open"));
    EXPECT_EQ(again.Info("Title"), "kept");
}

TEST(Save, MendsAPageTreeThatClaimsTooMany)
{
    const CTemporaryFolder folder;
    std::string wrong = SamplePdf(2);
    wrong.replace(wrong.find("/Count 2"), 8, "/Count 9");
    // Both pages inherit their size, and the tree leads back to its root.
    wrong.replace(wrong.find("/Kids[1000 0 R 1002 0 R ]"), 25,
                  "/Kids[1000 0 R 1002 0 R 2 0 R]/MediaBox[0 0 300 400]");
    for (std::size_t at; (at = wrong.find("/MediaBox[0 0 612 792]")) != std::string::npos;) wrong.erase(at, 22);
    CPdfDocument document = CPdfDocument::Open(folder.Write("a.pdf", wrong));
    document.Save({.path = folder / "b.pdf", .linearise = true});
    if (!HaveTool("pdfinfo")) GTEST_SKIP() << "nobody else looks at it";
    const ToolResult info = RunTool({"pdfinfo", folder / "b.pdf"});
    EXPECT_THAT(info.output, testing::ContainsRegex("Pages: *2\n"));
    EXPECT_THAT(info.output, testing::ContainsRegex("Page size: *300 x 400"));
}

TEST(Save, RefusesTargetsAndLeavesNothingBehind)
{
    const CTemporaryFolder folder;
    const std::string a = folder.Write("a.pdf", SamplePdf(1)), taken = folder.Write("taken.pdf", "mine");
    const struct {
        const char* what;
        PdfSaveOptions options;
        PdfProblem problem;
    } rows[] = {
        {"taken name", {.path = taken, .mustNotExist = true}, PdfProblem::Exists},
        {"own file", {.mustNotExist = true}, PdfProblem::Exists},
        {"folder", {.path = folder.Path()}, PdfProblem::CannotWrite},
        {"missing folder", {.path = folder / "no/b.pdf"}, PdfProblem::CannotWrite},
        {"cancelled", {.path = taken, .cancelled = [] { return true; }}, PdfProblem::Cancelled},
    };
    const std::size_t entries = folder.EntryCount();
    for (const auto& row : rows) {
        CPdfDocument document = TitledDocument(a, "x");
        EXPECT_EQ(ProblemOf([&] { document.Save(row.options); }), row.problem) << row.what;
        EXPECT_TRUE(document.IsModified()) << row.what;
        EXPECT_EQ(document.Path(), a) << row.what;
        EXPECT_EQ(FileBytes(taken), "mine") << row.what;
        EXPECT_EQ(folder.EntryCount(), entries) << row.what;
    }
    CPdfDocument document = TitledDocument(a, "x");
    document.Save({.path = folder / "fresh.pdf", .mustNotExist = true});
    EXPECT_EQ(TitleOf(folder / "fresh.pdf"), "x");
}

TEST(Save, NeedsTheRightToChange)
{
    const CTemporaryFolder folder;
    CPdfDocument plain = CPdfDocument::Open(folder.Write("plain.pdf", SamplePdf(1)));
    StandardSecurity security;
    security.hasOwner = true;
    security.ownerPasswordUtf8 = "change";
    security.permissions = pdfright::kPrint;
    plain.SetSecurity(security);
    plain.Save({.path = folder / "restricted.pdf"});
    CPdfDocument restricted = CPdfDocument::Open(folder / "restricted.pdf");
    EXPECT_EQ(ProblemOf([&] { restricted.SetInfo("Title", "x"); }), PdfProblem::NotPermitted);
    EXPECT_EQ(ProblemOf([&] { restricted.Save({.path = folder / "copy.pdf"}); }), PdfProblem::NotPermitted);
    EXPECT_TRUE(restricted.Authorize("change", WantedRights::Owner));
    restricted.SetInfo("Title", "x");
    restricted.Save({.path = folder / "copy.pdf"});
    EXPECT_EQ(TitleOf(folder / "copy.pdf"), "x");
}

TEST(Save, CopiesStreamsAsTheyAre)
{
    const CTemporaryFolder folder;
    const std::string coded = "00112233445566778899>";
    const std::string stream = "100 0 obj\n<</Filter/ASCIIHexDecode/Length " + std::to_string(coded.size()) +
                               ">>\nstream\n" + coded + "\nendstream\nendobj\n";
    const std::string path = folder.Write("a.pdf", SamplePdf(1, "", stream));
    TitledDocument(path, "x").Save({});
    EXPECT_THAT(FileBytes(path), testing::HasSubstr(coded));

    // The same in a file with object streams, which stay packed.
    if (!HaveTool("qpdf")) GTEST_SKIP() << "nobody makes such a file";
    ASSERT_EQ(RunTool({"qpdf", "--object-streams=generate", "--stream-data=preserve", path, folder / "b.pdf"}).code,
              0);
    TitledDocument(folder / "b.pdf", "y").Save({.path = folder / "c.pdf"});
    const std::string bytes = FileBytes(folder / "c.pdf");
    EXPECT_THAT(bytes, testing::HasSubstr(coded));
    EXPECT_THAT(bytes, testing::HasSubstr("/ObjStm"));
    EXPECT_THAT(bytes, testing::Not(testing::HasSubstr("/Title")));
    EXPECT_EQ(TitleOf(folder / "c.pdf"), "y");
}

TEST(Save, InformationKeysOfAnyKindComeBack)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("a.pdf", SamplePdf(1));
    const struct {
        const char* key;
        std::string value;
    } rows[] = {
        {"Title", "\xFE\xFF\x03\xB1\xD8\x3D\xDE\x00"},
        {"My Key", "plain"},
        {"Odd /()Key", std::string("a\0b\r\n\\)", 7)},
        {"Author", ""},
    };
    CPdfDocument document = CPdfDocument::Open(path);
    for (const auto& row : rows) document.SetInfo(row.key, row.value);
    EXPECT_EQ(ProblemOf([&] { document.SetInfo("A#41", "x"); }), PdfProblem::UnsupportedInput);
    document.Save({});
    CPdfDocument reopened = CPdfDocument::Open(path);
    EXPECT_EQ(reopened.InfoKeys().size(), std::size(rows));
    for (const auto& row : rows) EXPECT_EQ(reopened.Info(row.key), row.value) << row.key;
}
