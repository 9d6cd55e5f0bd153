#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include <gtest/gtest.h>

#include "TestPdfs.h"

using namespace openhost;

namespace {

unsigned ModeOf(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777u : 0;
}

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

TEST_F(Save, ReplacesALinkInTheWayButSavesNoDocumentThroughItsOwnAndOpensNoPipe)
{
    const std::string real = folder.Write("real.pdf", SamplePdf(1)), before = FileBytes(real),
                      result = folder / "result.pdf";
    ::chmod(real.c_str(), 0600);
    std::filesystem::create_symlink("real.pdf", folder / "own.pdf");
    std::filesystem::create_symlink("real.pdf", result);
    std::filesystem::create_symlink("nowhere", folder / "dangling.pdf");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    CPdfDocument document = TitledDocument(folder / "own.pdf", "changed");
    const auto problem = [&](const PdfSaveOptions& options) { return ProblemOf([&] { document.Save(options); }); };
    EXPECT_EQ(problem({}), PdfProblem::NotAFile);
    EXPECT_EQ(problem({.path = folder / "dangling.pdf", .mustNotExist = true}), PdfProblem::Exists);
    EXPECT_EQ(problem({.path = folder / "pipe"}), PdfProblem::NotAFile);
    EXPECT_EQ(ProblemOf([&] { CPdfDocument::Open(folder / "pipe"); }), PdfProblem::NotAFile);
    EXPECT_EQ(folder.EntryCount(), 5u);
    document.Save({.path = result});
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "own.pdf"));
    EXPECT_FALSE(std::filesystem::is_symlink(result));
    EXPECT_EQ(TitleOf(result), "changed");
    EXPECT_EQ(ModeOf(result), 0600u);
    EXPECT_EQ(FileBytes(real), before);
}

TEST_F(Save, AFullDiskIsToldAsSuchAndLeavesTheOldFile)
{
    const std::string path = folder.Write("a.pdf", SamplePdf(300)), before = FileBytes(path);
    for (const bool linearise : {false, true}) {
        CPdfDocument document = TitledDocument(path, "x");
        rlimit old{};
        ::getrlimit(RLIMIT_FSIZE, &old);
        const rlimit low{40000, old.rlim_max};
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &low);
        const auto problem = ProblemOf([&] { document.Save({.linearise = linearise}); });
        ::setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, handler);
        EXPECT_EQ(problem, PdfProblem::DiskFull);
        EXPECT_EQ(FileBytes(path), before);
        EXPECT_EQ(folder.EntryCount(), 1u);
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
