#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "platform/Files.h"
#include "support/TemporaryFolder.h"

namespace fs = std::filesystem;

TEST(FilesPosix, TellsWhatStandsAtAPath)
{
    const CTemporaryFolder folder;
    folder.Write("file", "12345");
    folder.MakeFolder("folder");
    fs::create_symlink("file", folder / "to file");
    fs::create_symlink("folder", folder / "to folder");
    fs::create_symlink("nowhere", folder / "dangling");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const struct {
        const char* name;
        bool file, folder, taken;
        int readError;
    } rows[] = {
        {"file", true, false, true, 0},        {"folder", false, true, true, EISDIR},
        {"to file", true, false, true, 0},     {"to folder", false, true, true, EISDIR},
        {"pipe", true, false, true, EINVAL},   {"dangling", false, false, true, ENOENT},
        {"none", false, false, false, ENOENT}, {"file/below", false, false, false, ENOTDIR},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto path = folder / row.name;
        EXPECT_EQ(platform::FileExists(path), row.file);
        EXPECT_EQ(platform::FolderExists(path), row.folder);
        EXPECT_EQ(platform::NameExists(path), row.taken);
        EXPECT_EQ(platform::CheckReadable(path).errorNumber, row.readError);
        EXPECT_EQ(platform::FileSize(path).has_value(), row.readError == 0);
    }
    EXPECT_EQ(platform::FileSize(folder / "to file"), 5u);
}

TEST(FilesPosix, DeletingRemovesLinksButNeverFolders)
{
    const CTemporaryFolder folder;
    folder.Write("file", "x");
    fs::create_symlink(folder.MakeFolder("folder"), folder / "to folder");
    EXPECT_EQ(platform::DeleteFile(folder / "folder").errorNumber, EISDIR);
    EXPECT_TRUE(platform::DeleteFile(folder / "to folder"));
    EXPECT_TRUE(platform::DeleteFile(folder / "file"));
    EXPECT_EQ(platform::DeleteFile(folder / "file").errorNumber, ENOENT);
    EXPECT_TRUE(platform::FolderExists(folder / "folder"));
}

TEST(FilesPosix, NamesNeedNotBeText)
{
    const CTemporaryFolder folder;
    for (const char* name : {"\xFF", "\xC3\xA4", "z"}) folder.Write(name, "");
    fs::create_symlink(".", folder / "link");
    std::string order;
    for (const auto& entry : platform::ListFolder(folder.Path())) order += entry.name + (entry.isFolder ? "/ " : " ");
    EXPECT_EQ(order, "link/ z \xC3\xA4 \xFF ");
}

TEST(FilesPosix, CreatingFoldersFollowsLinks)
{
    const CTemporaryFolder folder;
    fs::create_symlink(folder.MakeFolder("real"), folder / "link");
    EXPECT_TRUE(platform::CreateFolders(folder / "link/x"));
    EXPECT_TRUE(platform::CreateFolders(folder / "link"));
    EXPECT_TRUE(platform::FolderExists(folder / "real/x"));
}

TEST(FilesPosix, AFileThatTellsNoSizeIsReadUpToTheLimit)
{
    platform::FileResult result;
    EXPECT_FALSE(platform::ReadWholeFile("/proc/self/maps", 10, &result));
    EXPECT_EQ(result.errorNumber, EFBIG);
}

TEST(FilesPosix, AnAtomicWriteGivesTheFileItsNewMode)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("settings", "old");
    fs::permissions(path, fs::perms(0666));
    ASSERT_TRUE(platform::WriteFileAtomically(path, "new", platform::Readers::Owner));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
    EXPECT_EQ(platform::WriteFileAtomically("/dev/null", "new", platform::Readers::Owner).errorNumber, EINVAL);
}

TEST(FilesPosix, TwoNamesOfOneFolderHaveOneCanonicalPath)
{
    const CTemporaryFolder folder;
    const auto real = folder.MakeFolder("real");
    fs::create_symlink("../real", real + "/loop");
    EXPECT_EQ(platform::CanonicalPath(real + "/loop/loop/.."), platform::CanonicalPath(folder.Path()));
    EXPECT_EQ(platform::CanonicalPath(real + "/loop/loop"), platform::CanonicalPath(real));
    EXPECT_EQ(platform::CanonicalPath(folder / "missing"), "");
}
