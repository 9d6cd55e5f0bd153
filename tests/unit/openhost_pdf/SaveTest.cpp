#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "TestPdfs.h"
#include "platform/Files.h"
#include "platform/Overseer.h"
#include "support/TemporaryFolder.h"

using namespace openhost;

namespace {

CPdfDocument TitledDocument(const std::string& path, const std::string& title)
{
    CPdfDocument document = CPdfDocument::Open(path);
    document.SetInfo("Title", title);
    return document;
}

/// Larger than what is read into memory when a document is opened.
std::string LargeObject()
{
    constexpr std::size_t kBytes = 17 << 20;
    return "100 0 obj\n<</Length " + std::to_string(kBytes) + ">>\nstream\n" + std::string(kBytes, 'x') +
           "\nendstream\nendobj\n";
}

/// Lets nothing be done for good.
class CRefusingOverseer final : public platform::COverseer {
public:
    CRefusingOverseer() : m_former(platform::InstallOverseer(this)) {}
    ~CRefusingOverseer() override { platform::InstallOverseer(m_former); }
    Answer Ask(Act, const std::string&, const std::string&) override { return Answer::Refuse; }
    bool Pretends() const override { return false; }
    std::optional<bool> Exists(const std::string&) const override { return std::nullopt; }

private:
    platform::COverseer* m_former;
};

std::string TitleOf(const std::string& path) { return CPdfDocument::Open(path).Info("Title").value_or("<none>"); }

unsigned ModeOf(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777u : 0;
}

/// Files may not grow past `bytes` while this lives: every further write fails.
class CFileSizeLimit {
public:
    explicit CFileSizeLimit(rlim_t bytes)
    {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit low{bytes, m_old.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &low);
    }
    ~CFileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_old{};
    void (*m_handler)(int) = nullptr;
};

/// Makes the superuser an ordinary user, to whom the given paths then belong; others stay what they are.
class CWithoutPrivileges {
public:
    explicit CWithoutPrivileges(const std::vector<std::string>& paths) : m_active(::geteuid() == 0)
    {
        if (!m_active) return;
        constexpr uid_t kNobody = 65534;
        for (const std::string& path : paths) EXPECT_EQ(::chown(path.c_str(), kNobody, kNobody), 0);
        EXPECT_EQ(::seteuid(kNobody), 0);
    }
    ~CWithoutPrivileges() { EXPECT_TRUE(!m_active || ::seteuid(0) == 0); }

private:
    bool m_active;
};

}  // namespace

TEST(Save, InPlaceContinuesFromTheNewFile)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("a.pdf", SamplePdf(3));
    ::chmod(path.c_str(), 0640);
    CPdfDocument document = TitledDocument(path, "first");
    EXPECT_TRUE(document.IsModified());
    document.Save({});
    EXPECT_FALSE(document.IsModified());
    EXPECT_EQ(TitleOf(path), "first");
    EXPECT_EQ(ModeOf(path), 0640u);

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
    CPdfDocument document = TitledDocument(path, "first");
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
    const ToolResult info = RunTool({"pdfinfo", folder / "b.pdf"});
    EXPECT_THAT(info.output, testing::ContainsRegex("Pages: *2\n"));
    EXPECT_THAT(info.output, testing::ContainsRegex("Page size: *300 x 400"));
}

TEST(Save, KeepsLinksAndReplacesWhatTheyLeadTo)
{
    const CTemporaryFolder folder;
    folder.MakeFolder("real");
    folder.Write("real/a.pdf", SamplePdf(1));
    std::filesystem::create_symlink("real/a.pdf", folder / "link.pdf");
    std::filesystem::create_symlink("real/new.pdf", folder / "dangling.pdf");
    CPdfDocument document = TitledDocument(folder / "link.pdf", "through the link");
    document.Save({});
    document.Save({.path = folder / "dangling.pdf"});
    for (const char* link : {"link.pdf", "dangling.pdf"}) {
        EXPECT_TRUE(std::filesystem::is_symlink(folder / link)) << link;
        EXPECT_EQ(TitleOf(folder / link), "through the link") << link;
    }
    EXPECT_EQ(TitleOf(folder / "real/new.pdf"), "through the link");
}

TEST(Save, RefusesTargetsAndLeavesNothingBehind)
{
    const CTemporaryFolder folder;
    const std::string a = folder.Write("a.pdf", SamplePdf(1)), taken = folder.Write("taken.pdf", "mine");
    std::filesystem::create_symlink("nowhere", folder / "dangling.pdf");
    std::filesystem::create_symlink("loop.pdf", folder / "loop.pdf");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const struct {
        const char* what;
        PdfSaveOptions options;
        PdfProblem problem;
    } rows[] = {
        {"taken name", {.path = taken, .mustNotExist = true}, PdfProblem::Exists},
        {"taken by a dangling link", {.path = folder / "dangling.pdf", .mustNotExist = true}, PdfProblem::Exists},
        {"own file", {.mustNotExist = true}, PdfProblem::Exists},
        {"folder", {.path = folder.Path()}, PdfProblem::CannotWrite},
        {"missing folder", {.path = folder / "no/b.pdf"}, PdfProblem::CannotWrite},
        {"pipe", {.path = folder / "pipe"}, PdfProblem::NotAFile},
        {"links in a circle", {.path = folder / "loop.pdf"}, PdfProblem::CannotWrite},
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

TEST(Save, AFullDiskLeavesTheOldFile)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("a.pdf", SamplePdf(300));
    const std::string before = FileBytes(path);
    for (const rlim_t room : {rlim_t{0}, rlim_t{1000}, rlim_t{40000}}) {
        for (const bool linearise : {false, true}) {
            CPdfDocument document = TitledDocument(path, "x");
            StandardSecurity security;
            security.method = 6;
            security.hasUser = true;
            security.userPasswordUtf8 = "open";
            document.SetSecurity(security);
            const CFileSizeLimit limit(room);
            EXPECT_EQ(ProblemOf([&] { document.Save({.linearise = linearise}); }), PdfProblem::DiskFull) << room;
            EXPECT_EQ(FileBytes(path), before) << room;
            EXPECT_EQ(folder.EntryCount(), 1u) << room;
        }
    }
}

TEST(Save, RespectsAccessRights)
{
    const CTemporaryFolder folder;
    const std::string a = folder.Write("a.pdf", SamplePdf(1)), guarded = folder.Write("guarded.pdf", "mine");
    ::chmod(guarded.c_str(), 0444);
    const std::string closed = folder.MakeFolder("closed");
    ::chmod(closed.c_str(), 0555);
    const CWithoutPrivileges ordinary({folder.Path(), a, guarded, closed});
    CPdfDocument document = TitledDocument(a, "x");
    EXPECT_EQ(ProblemOf([&] { document.Save({.path = guarded}); }), PdfProblem::NoAccess);
    EXPECT_EQ(ProblemOf([&] { document.Save({.path = closed + "/b.pdf"}); }), PdfProblem::NoAccess);
    EXPECT_EQ(FileBytes(guarded), "mine");
    document.Save({.path = folder / "b.pdf"});
    ::chmod(a.c_str(), 0);
    EXPECT_EQ(ProblemOf([&] { CPdfDocument::Open(a); }), PdfProblem::NoAccess);
}

TEST(Save, NewFilesFollowTheMask)
{
    const CTemporaryFolder folder;
    CPdfDocument document = TitledDocument(folder.Write("a.pdf", SamplePdf(1)), "x");
    const mode_t old = ::umask(027);
    document.Save({.path = folder / "b.pdf"});
    ::umask(old);
    EXPECT_EQ(ModeOf(folder / "b.pdf"), 0640u);
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
