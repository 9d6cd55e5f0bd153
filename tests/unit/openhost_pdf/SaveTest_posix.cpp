#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "SavedPdfs.h"
#include "TestPdfs.h"
#include "support/TemporaryFolder.h"

using namespace openhost;

namespace {

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

TEST(Save, InPlaceKeepsTheAccessRights)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("a.pdf", SamplePdf(3));
    ::chmod(path.c_str(), 0640);
    TitledDocument(path, "first").Save({});
    EXPECT_EQ(TitleOf(path), "first");
    EXPECT_EQ(ModeOf(path), 0640u);
}

TEST(Save, ReplacesALinkInTheWayButSavesNoDocumentThroughItsOwn)
{
    const CTemporaryFolder folder;
    const std::string real = folder.Write("real.pdf", SamplePdf(1)), before = FileBytes(real);
    ::chmod(real.c_str(), 0600);
    std::filesystem::create_symlink("real.pdf", folder / "own.pdf");
    std::filesystem::create_symlink("real.pdf", folder / "result.pdf");
    CPdfDocument document = TitledDocument(folder / "own.pdf", "changed");
    EXPECT_EQ(ProblemOf([&] { document.Save({}); }), PdfProblem::NotAFile);
    document.Save({.path = folder / "result.pdf"});
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "own.pdf"));
    EXPECT_FALSE(std::filesystem::is_symlink(folder / "result.pdf"));
    EXPECT_EQ(TitleOf(folder / "result.pdf"), "changed");
    EXPECT_EQ(ModeOf(folder / "result.pdf"), 0600u);
    EXPECT_EQ(FileBytes(real), before);
}

TEST(Save, RefusesLinksAndPipesAsTargets)
{
    const CTemporaryFolder folder;
    const std::string a = folder.Write("a.pdf", SamplePdf(1));
    std::filesystem::create_symlink("nowhere", folder / "dangling.pdf");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const struct {
        const char* what;
        PdfSaveOptions options;
        PdfProblem problem;
    } rows[] = {
        {"taken by a dangling link", {.path = folder / "dangling.pdf", .mustNotExist = true}, PdfProblem::Exists},
        {"pipe", {.path = folder / "pipe"}, PdfProblem::NotAFile},
    };
    const std::size_t entries = folder.EntryCount();
    for (const auto& row : rows) {
        CPdfDocument document = TitledDocument(a, "x");
        EXPECT_EQ(ProblemOf([&] { document.Save(row.options); }), row.problem) << row.what;
        EXPECT_TRUE(document.IsModified()) << row.what;
        EXPECT_EQ(folder.EntryCount(), entries) << row.what;
    }
    EXPECT_EQ(ProblemOf([&] { CPdfDocument::Open(folder / "pipe"); }), PdfProblem::NotAFile);
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
