#include <fstream>
#include <map>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestPdfs.h"
#include "Tools.h"
#include "platform/Files.h"
#include "support/RefusingOverseer.h"

using namespace openhost;

using Save = CPdfTest;

TEST_F(Save, ALargeDocumentReplacesTheFileThatItIsReadFrom)
{
    constexpr std::size_t kLarge = 17 << 20;  // larger than what is read into memory when a document is opened
    const std::string path = folder.Write("a.pdf", SamplePdf(2, "", StreamObject(100, "", std::string(kLarge, 'x'))));
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

TEST_F(Save, ElsewhereMovesTheDocumentACopyDoesNotAndTheLossOfTheNewFileCostsNothing)
{
    const std::string a = folder.Write("a.pdf", SamplePdf(2)), b = folder / "b.pdf", c = folder / "c.pdf";
    const std::string before = FileBytes(a);
    CPdfDocument document = TitledDocument(a, "new");
    document.Save({.path = b, .copy = true});
    EXPECT_EQ(document.Path(), a);
    EXPECT_TRUE(document.IsModified());
    EXPECT_EQ(TitleOf(b), "new");
    document.SetSecurity(Protection("open", "", 0));
    document.Save({.path = c});
    EXPECT_EQ(document.Path(), c);
    EXPECT_EQ(FileBytes(a), before);
    std::filesystem::remove(c);
    EXPECT_EQ(document.PageCount(), 2);
    document.Save({.path = folder / "d.pdf"});
    EXPECT_EQ(CPdfDocument::Open(folder / "d.pdf", WithPassword("open")).Info("Title"), "new");
}

TEST_F(Save, MendsAPageTreeThatClaimsTooMany)
{
    std::string wrong = SamplePdf(2);
    wrong.replace(wrong.find("/Count 2"), 8, "/Count 9");
    // Both pages inherit their size, and the tree leads back to its root.
    wrong.replace(wrong.find("/Kids[1000 0 R 1002 0 R ]"), 25,
                  "/Kids[1000 0 R 1002 0 R 2 0 R]/MediaBox[0 0 300 400]");
    for (std::size_t at; (at = wrong.find("/MediaBox[0 0 612 792]")) != std::string::npos;) wrong.erase(at, 22);
    CPdfDocument::Open(folder.Write("a.pdf", wrong)).Save({.path = folder / "b.pdf", .linearise = true});
    if (!HaveTool("pdfinfo")) GTEST_SKIP() << "nobody else looks at it";
    EXPECT_THAT(RunTool({"pdfinfo", folder / "b.pdf"}).output,
                testing::ContainsRegex("Pages: *2\n(.*\n)*Page size: *300 x 400"));
}

TEST_F(Save, RefusesTargetsAndLeavesNothingBehind)
{
    const std::string a = folder.Write("a.pdf", SamplePdf(1)), taken = folder.Write("taken.pdf", "mine");
    const struct {
        const char* what;
        PdfSaveOptions options;
        PdfProblem problem;
    } rows[] = {{"taken name", {.path = taken, .mustNotExist = true}, PdfProblem::Exists},
                {"own file", {.mustNotExist = true}, PdfProblem::Exists},
                {"folder", {.path = folder.Path()}, PdfProblem::CannotWrite},
                {"missing folder", {.path = folder / "no/b.pdf"}, PdfProblem::CannotWrite},
                {"cancelled", {.path = taken, .cancelled = [] { return true; }}, PdfProblem::Cancelled}};
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

TEST_F(Save, CopiesStreamsAsTheyAre)
{
    const std::string coded = "00112233445566778899>";
    const std::string path =
        folder.Write("a.pdf", SamplePdf(1, "", StreamObject(100, "/Filter/ASCIIHexDecode", coded)));
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

TEST_F(Save, InformationKeysOfAnyKindComeBack)
{
    const std::string path = folder.Write("a.pdf", SamplePdf(1));
    const std::map<std::string, std::string> entries = {{"Title", "\xFE\xFF\x03\xB1\xD8\x3D\xDE\x00"},
                                                        {"My Key", "plain"},
                                                        {"Odd /()Key", std::string("a\0b\r\n\\)", 7)}};
    CPdfDocument document = TitledDocument(path, "first");
    document.SetInfo("Author", "somebody");
    document.SetInfo("Author", "");
    for (const auto& [key, value] : entries) document.SetInfo(key, value);
    EXPECT_EQ(ProblemOf([&] { document.SetInfo("A#41", "x"); }), PdfProblem::UnsupportedInput);
    document.Save({});
    CPdfDocument reopened = CPdfDocument::Open(path);
    EXPECT_EQ(reopened.InfoKeys().size(), entries.size());
    for (const auto& [key, value] : entries) EXPECT_EQ(reopened.Info(key), value) << key;
}

namespace {

using Damage = std::function<void(std::string& bytes)>;

Damage Replaced(const std::string& from, const std::string& to)
{
    return [=](std::string& bytes) {
        const std::size_t at = bytes.rfind(from);
        ASSERT_NE(at, std::string::npos) << from;
        bytes.replace(at, from.size(), to);
    };
}

void Rewrite(const std::string& path, const Damage& damage)
{
    std::string bytes = FileBytes(path);
    damage(bytes);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

/// Changes the hexadecimal digit behind a key.
Damage OtherDigit(const std::string& key)
{
    return [key](std::string& bytes) {
        char& digit = bytes[bytes.rfind(key) + key.size() + 2];
        digit = digit == '0' ? '1' : '0';
    };
}

}  // namespace

using ReadBack = CPdfTest;

TEST_F(ReadBack, FindsEachDamageAndReplacesNothing)
{
    const struct {
        const char* what;
        int method;  // of the encryption; 0 = none
        Damage damage;
        const char* reason;
    } rows[] = {{"cut", 0, [](std::string& bytes) { bytes.resize(bytes.size() / 2); }, "startxref"},
                {"wrong offset of the table", 0,
                 [](std::string& bytes) { bytes.insert(bytes.rfind("startxref") + 10, "1"); }, "xref"},
                {"an object elsewhere", 0, Replaced("\n3 0 obj", "\n9 0 obj"), "object 3 is not where"},
                {"a page less", 0, Replaced("/Type /Page ", "/Type /Pagos"), ""},
                {"the last page is nothing", 0,
                 [](std::string& bytes) {
                     const std::size_t kids = bytes.find("/Kids [ "), end = bytes.find("0 R ]", kids);
                     bytes.replace(end - 2, 5, "null ");
                 },
                 "2 of 3 pages"},
                {"no content", 0, Replaced("/Contents", "/Cantents"), "its content"},
                {"a complaint", 0, Replaced("/Resources", "/MediaBox "), "duplicated key"},
                {"another content", 0, Replaced("(Page", "(Pace"), "another content"},
                {"readable by everybody", 2, Replaced("/Encrypt", "/Encrapt"), "not encrypted"},
                {"another open password", 2, OtherDigit("/U"), ""},
                {"another permissions password", 2, OtherDigit("/O"), ""},
                {"more rights", 2, Replaced("/P -3904", "/P -3900"), ""},
                {"more rights, which make no key", 7, Replaced("/P -3392", "/P -3388"), "another /P"}};
    for (const auto& row : rows) {
        const std::string old = SamplePdf(3);
        const std::string path = folder.Write("a.pdf", old);
        CPdfDocument document = CPdfDocument::Open(path);
        StandardSecurity protection = Protection("open", "change", row.method);
        protection.permissions = 0xFFFFF0C0;
        if (row.method != 0) document.SetSecurity(protection);
        int writings = 0;
        const auto damage = [&](const std::string& written) {
            ++writings;
            Rewrite(written, row.damage);
        };
        std::string message;
        try {
            document.Save({.linearise = true, .beforeReadBack = damage});
        } catch (const CPdfError& error) {
            EXPECT_EQ(error.Problem(), PdfProblem::NotReadBack) << row.what;
            message = error.Message();
        }
        EXPECT_THAT(message, testing::HasSubstr(row.reason)) << row.what;
        EXPECT_THAT(message, testing::HasSubstr("could not be read back")) << row.what;
        EXPECT_EQ(writings, 2) << row.what << ": linearised, then plain";
        EXPECT_EQ(FileBytes(path), old) << row.what;
        EXPECT_EQ(folder.EntryCount(), 1u) << row.what;
    }
}

TEST_F(ReadBack, WritesPlainlyWhatDoesNotComeBackLinearised)
{
    CPdfDocument document = CPdfDocument::Open(folder.Write("a.pdf", SamplePdf(2)));
    std::string remark;
    int writings = 0;
    document.Save({.linearise = true,
                   .beforeReadBack =
                       [&](const std::string& written) {
                           if (++writings == 1) Rewrite(written, [](std::string& bytes) { bytes.resize(99); });
                       },
                   .remark = [&](const std::string& text) { remark = text; }});
    EXPECT_EQ(writings, 2);
    EXPECT_THAT(remark, testing::HasSubstr("written without linearisation"));
    EXPECT_EQ(CPdfDocument::Open(folder / "a.pdf", {.repair = false}).PageCount(), 2);
}

TEST_F(ReadBack, WhatTheWriterWouldGetWrongComesOutRight)
{
    const struct {
        const char* what;
        std::string trailer, from, to;
        const char* expected;
    } rows[] = {{"escaped number sign in a key", "", "/Font<</F1 ", "/Font<</G#2341 ", "/G#2341 "},
                {"and in a name", "", "/BaseFont/Helvetica", "/BaseFont/H#2341x", "/BaseFont /H#2341x"},
                {"invalid escapes stay", "", "/BaseFont/Helvetica", "/BaseFont/H#zz", "/BaseFont /H#zz"},
                {"no size", "", "/Size 9000", "", "/Size "},
                {"empty identifier", "/ID[<><>]", "", "", "/ID [<"},
                {"identifier is no list", "/ID(x)", "", "", "/ID [<"}};
    for (const auto& row : rows) {
        for (const bool linearise : {false, true}) {
            std::string file = SamplePdf(2, row.trailer);
            for (std::size_t at = 0; !row.from.empty() && (at = file.find(row.from, at)) != std::string::npos;)
                file.replace(at, row.from.size(), row.to);
            CPdfDocument document = CPdfDocument::Open(folder.Write("a.pdf", file));
            std::string remark;
            document.Save({.linearise = linearise, .remark = [&](const std::string& text) { remark = text; }});
            EXPECT_EQ(remark, "") << row.what;
            EXPECT_THAT(FileBytes(folder / "a.pdf"), testing::HasSubstr(row.expected)) << row.what;
            CPdfDocument again = CPdfDocument::Open(folder / "a.pdf", {.repair = false});
            EXPECT_EQ(again.PageCount(), 2) << row.what;
            EXPECT_EQ(again.IsLinearised(), linearise) << row.what;
        }
    }
}

TEST_F(ReadBack, ADocumentThatChangedMeanwhileIsNotReplaced)
{
    const std::string path = folder.Write("a.pdf", SamplePdf(1)), newer = SamplePdf(4);
    CPdfDocument document = TitledDocument(path, "old");
    folder.Write("a.pdf", newer);
    EXPECT_EQ(ProblemOf([&] { document.Save({}); }), PdfProblem::InputChanged);
    EXPECT_EQ(FileBytes(path), newer);
    document.Save({.path = folder / "b.pdf"});
    EXPECT_EQ(CPdfDocument::Open(folder / "b.pdf").PageCount(), 1);
    document.SetInfo("Title", "its own file by now");
    document.Save({});
    EXPECT_EQ(TitleOf(folder / "b.pdf"), "its own file by now");
}
