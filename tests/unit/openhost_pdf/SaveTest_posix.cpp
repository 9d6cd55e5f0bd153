#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "TestPdfs.h"

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

}  // namespace

using Save = CPdfTest;

TEST_F(Save, InPlaceKeepsTheAccessRightsAndNewFilesFollowTheMask)
{
    const std::string path = folder.Write("a.pdf", SamplePdf(3));
    ::chmod(path.c_str(), 0604);
    TitledDocument(path, "first").Save({});
    EXPECT_EQ(TitleOf(path), "first");
    EXPECT_EQ(ModeOf(path), 0604u);
    ::chmod(path.c_str(), 0666);
    const mode_t old = ::umask(027);
    TitledDocument(path, "x").Save({.path = folder / "b.pdf"});
    ::umask(old);
    EXPECT_EQ(ModeOf(folder / "b.pdf"), 0640u);
}

TEST_F(Save, ReplacesALinkInTheWayButSavesNoDocumentThroughItsOwn)
{
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

TEST_F(Save, RefusesLinksAndPipesAsTargets)
{
    const std::string a = folder.Write("a.pdf", SamplePdf(1));
    std::filesystem::create_symlink("nowhere", folder / "dangling.pdf");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    CPdfDocument document = TitledDocument(a, "x");
    const auto problem = [&](const PdfSaveOptions& options) { return ProblemOf([&] { document.Save(options); }); };
    EXPECT_EQ(problem({.path = folder / "dangling.pdf", .mustNotExist = true}), PdfProblem::Exists);
    EXPECT_EQ(problem({.path = folder / "pipe"}), PdfProblem::NotAFile);
    EXPECT_TRUE(document.IsModified());
    EXPECT_EQ(folder.EntryCount(), 3u);
    EXPECT_EQ(ProblemOf([&] { CPdfDocument::Open(folder / "pipe"); }), PdfProblem::NotAFile);
}

TEST_F(Save, AFullDiskLeavesTheOldFile)
{
    const std::string path = folder.Write("a.pdf", SamplePdf(300));
    const std::string before = FileBytes(path);
    for (const rlim_t room : {rlim_t{0}, rlim_t{1000}, rlim_t{40000}}) {
        for (const bool linearise : {false, true}) {
            CPdfDocument document = TitledDocument(path, "x");
            document.SetSecurity(Protection("open", "", 6));
            const CFileSizeLimit limit(room);
            EXPECT_EQ(ProblemOf([&] { document.Save({.linearise = linearise}); }), PdfProblem::DiskFull) << room;
            EXPECT_EQ(FileBytes(path), before) << room;
            EXPECT_EQ(folder.EntryCount(), 1u) << room;
        }
    }
}

TEST_F(Save, RespectsAccessRights)
{
    const std::string a = folder.Write("a.pdf", SamplePdf(1)), guarded = folder.Write("guarded.pdf", "mine");
    ::chmod(guarded.c_str(), 0444);
    const bool superuser = ::geteuid() == 0;
    constexpr uid_t kNobody = 65534;
    for (const std::string& path : {folder.Path(), a, guarded})
        EXPECT_TRUE(!superuser || ::chown(path.c_str(), kNobody, kNobody) == 0);
    ASSERT_TRUE(!superuser || ::seteuid(kNobody) == 0);
    const auto saving = ProblemOf([&] { TitledDocument(a, "x").Save({.path = guarded}); });
    ::chmod(a.c_str(), 0);
    const auto opening = ProblemOf([&] { CPdfDocument::Open(a); });
    EXPECT_TRUE(!superuser || ::seteuid(0) == 0);
    EXPECT_EQ(saving, PdfProblem::NoAccess);
    EXPECT_EQ(opening, PdfProblem::NoAccess);
    EXPECT_EQ(FileBytes(guarded), "mine");
}
