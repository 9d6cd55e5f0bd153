#include "platform/Files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "support/TemporaryFolder.h"

namespace fs = std::filesystem;

TEST(Files, TellsWhatStandsAtAPath)
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

TEST(Files, DeletingRemovesLinksButNeverFolders)
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

TEST(Files, FoldersAreListedInUpperCasedOrderOfAnyLanguage)
{
    const CTemporaryFolder folder;
    // "_" stands between the upper-case and the lower-case letters, and the umlaut counts as its capital.
    const std::string capital = "\xC3\x84", small = "\xC3\xA4";
    for (const char* name : {"b", "A", "a", "_", "B.txt", ".hidden", "Z", "\xFF"}) folder.Write(name, "");
    for (const auto& name : {small + "1", capital + "2"}) folder.Write(name, "");
    fs::create_symlink(".", folder / "link");
    std::string order;
    for (const auto& entry : platform::ListFolder(folder.Path())) {
        order += entry.name + (entry.isFolder ? "/" : "") + (entry.isHidden ? "*" : "") + " ";
    }
    EXPECT_EQ(order, ".hidden* A a b B.txt link/ Z _ " + small + "1 " + capital + "2 \xFF ");

    platform::FileResult result;
    EXPECT_TRUE(platform::ListFolder(folder / "missing", &result).empty());
    EXPECT_EQ(result.errorNumber, ENOENT);
}

TEST(Files, CreatingFoldersAcceptsWhatIsThereUnlessItIsAFile)
{
    const CTemporaryFolder folder;
    folder.Write("file", "");
    fs::create_symlink(folder.MakeFolder("real"), folder / "link");
    const struct {
        const char* path;
        int error;
    } rows[] = {{"a/b/c", 0},  {"a/b/c", 0}, {"a/b/d/", 0},     {"a//e", 0},
                {"link/x", 0}, {"link", 0},  {"file", ENOTDIR}, {"file/x", ENOTDIR}};
    for (const auto& row : rows) {
        EXPECT_EQ(platform::CreateFolders(folder.Path() + "/" + row.path).errorNumber, row.error) << row.path;
    }
    EXPECT_TRUE(platform::FolderExists(folder / "real/x"));
    EXPECT_EQ(platform::CreateFolders("").errorNumber, ENOENT);
}

TEST(Files, ReadingStopsAtTheLimit)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("file", std::string("a\0b", 3));
    platform::FileResult result;
    EXPECT_EQ(platform::ReadWholeFile(path, 3, &result), std::string("a\0b", 3));
    EXPECT_FALSE(platform::ReadWholeFile(path, 2, &result));
    EXPECT_EQ(result.errorNumber, EFBIG);
    EXPECT_FALSE(platform::ReadWholeFile("/proc/self/maps", 10, &result)) << "a file that tells no size";
    EXPECT_EQ(result.errorNumber, EFBIG);
}

TEST(Files, AnAtomicWriteGivesTheFileItsNewMode)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("settings", "old");
    fs::permissions(path, fs::perms(0666));
    ASSERT_TRUE(platform::WriteFileAtomically(path, "new", 0600));
    EXPECT_EQ(FileBytes(path), "new");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
    EXPECT_EQ(folder.EntryCount(), 1u);
    EXPECT_EQ(platform::WriteFileAtomically(folder.MakeFolder("folder"), "new", 0600).errorNumber, EISDIR);
    EXPECT_EQ(platform::WriteFileAtomically("/dev/null", "new", 0600).errorNumber, EINVAL);
}

TEST(Files, TwoNamesOfOneFolderHaveOneCanonicalPath)
{
    const CTemporaryFolder folder;
    const auto real = folder.MakeFolder("real");
    fs::create_symlink("../real", real + "/loop");
    EXPECT_EQ(platform::CanonicalPath(real + "/loop/loop/.."), platform::CanonicalPath(folder.Path()));
    EXPECT_EQ(platform::CanonicalPath(real + "/loop/loop"), platform::CanonicalPath(real));
    EXPECT_EQ(platform::CanonicalPath(folder / "missing"), "");
}
