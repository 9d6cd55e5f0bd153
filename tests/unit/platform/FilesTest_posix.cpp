#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "platform/Files.h"
#include "support/TemporaryFolder.h"

namespace fs = std::filesystem;

TEST(FilesPosix, DeletingRemovesLinksAndCreatingFollowsThem)
{
    const CTemporaryFolder folder;
    fs::create_symlink(folder.MakeFolder("real"), folder / "link");
    EXPECT_TRUE(platform::CreateFolders(folder / "link/x"));
    EXPECT_TRUE(platform::CreateFolders(folder / "link"));
    EXPECT_TRUE(platform::FolderExists(folder / "real/x"));
    EXPECT_TRUE(platform::DeleteFile(folder / "link"));
    EXPECT_FALSE(platform::NameExists(folder / "link"));
    EXPECT_TRUE(platform::FolderExists(folder / "real/x"));
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
}
