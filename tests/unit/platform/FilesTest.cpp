#include <filesystem>

#include <gtest/gtest.h>

#include "platform/Files.h"
#ifndef _WIN32
#include <sys/stat.h>

#include <cerrno>
#endif

#include "support/TemporaryFolder.h"

using platform::FileProblem;
using platform::ProblemOf;
using platform::Readers;

namespace {

/// Links and a pipe, where there are some.
void MakeOddNames([[maybe_unused]] const CTemporaryFolder& folder)
{
#ifndef _WIN32
    std::filesystem::create_symlink("file", folder / "to file");
    std::filesystem::create_symlink("folder", folder / "to folder");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
#endif
}

}  // namespace

TEST(Files, TellsWhatStandsAtAPath)
{
    const CTemporaryFolder folder;
    folder.Write("file", "12345");
    folder.MakeFolder("folder");
    MakeOddNames(folder);
    const struct {
        const char* name;
        bool file, folder, taken;
        FileProblem reading;
    } rows[] = {
        {"file", true, false, true, FileProblem::None},
        {"folder", false, true, true, FileProblem::IsAFolder},
        {"none", false, false, false, FileProblem::Missing},
        {"file/below", false, false, false, FileProblem::Missing},
        {"none/below", false, false, false, FileProblem::Missing},
#ifndef _WIN32
        {"to file", true, false, true, FileProblem::None},
        {"to folder", false, true, true, FileProblem::IsAFolder},
        {"pipe", true, false, true, FileProblem::NotARegularFile},
        {"dangling", false, false, true, FileProblem::Missing},
#endif
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto path = folder / row.name;
        EXPECT_EQ(platform::FileExists(path), row.file);
        EXPECT_EQ(platform::FolderExists(path), row.folder);
        EXPECT_EQ(platform::NameExists(path), row.taken);
        EXPECT_EQ(ProblemOf(platform::CheckReadable(path)), row.reading);
        EXPECT_EQ(platform::FileSize(path),
                  row.reading == FileProblem::None ? std::optional<std::uint64_t>(5) : std::nullopt);
        EXPECT_EQ(platform::StampOf(path).has_value(), row.file || row.folder);
    }
    EXPECT_EQ(ProblemOf(platform::CheckReadable("")), FileProblem::Missing);
    EXPECT_FALSE(platform::NameExists(""));
}

TEST(Files, AStampTellsOneFileFromAnotherAndOneStateFromAnother)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("a", "1"), twin = folder.Write("b", "1");
    std::filesystem::create_hard_link(path, folder / "c");
    const auto first = platform::StampOf(path), same = platform::StampOf(folder / "c"),
               other = platform::StampOf(twin);
    ASSERT_TRUE(first && same && other);
    EXPECT_EQ(first->size, 1u);
    EXPECT_EQ(first->links, 2u);
    EXPECT_TRUE(first->inode == same->inode && first->device == same->device);
    EXPECT_TRUE(first->inode != other->inode && first->device == other->device);
    const auto hourAgo = std::filesystem::last_write_time(path) - std::chrono::hours(1);
    std::filesystem::last_write_time(path, hourAgo);
    EXPECT_EQ(platform::StampOf(path)->modifiedNanoseconds / 1'000'000'000,
              first->modifiedNanoseconds / 1'000'000'000 - 3600);
}

TEST(Files, DeletingRemovesFilesButNeverFolders)
{
    const CTemporaryFolder folder;
    folder.Write("file", "x");
    EXPECT_EQ(ProblemOf(platform::DeleteFile(folder.MakeFolder("folder"))), FileProblem::IsAFolder);
    EXPECT_TRUE(platform::DeleteFile(folder / "file"));
    EXPECT_EQ(ProblemOf(platform::DeleteFile(folder / "file")), FileProblem::Missing);
    EXPECT_TRUE(platform::FolderExists(folder / "folder"));
}

TEST(Files, FoldersAreListedInUpperCasedOrderOfAnyLanguage)
{
    const CTemporaryFolder folder;
    // "_" stands between the upper-case and the lower-case letters, the umlaut counts as its capital, and what lies
    // beyond 16 bits comes last.
    const std::string capital = "\xC3\x84", small = "\xC3\xA4", emoji = "\xF0\x9F\x98\x80", wide = "\xEF\xBC\xA1";
    for (const char* name : {"b", "A1", "a2", "_", "B.txt", ".hidden", "Z"}) folder.Write(name, "");
    for (const auto& name : {small + "1", capital + "2", emoji, wide}) folder.Write(name, "");
    folder.MakeFolder("folder");
    std::string order;
    for (const auto& entry : platform::ListFolder(folder.Path())) {
        order += entry.name + (entry.isFolder ? "/" : "") + (entry.isHidden ? "*" : "") + " ";
    }
    EXPECT_EQ(order,
              ".hidden* A1 a2 b B.txt folder/ Z _ " + small + "1 " + capital + "2 " + wide + " " + emoji + " ");

    platform::FileResult result;
    for (const char* name : {"missing", "b"}) {
        EXPECT_TRUE(platform::ListFolder(folder / name, &result).empty());
        EXPECT_EQ(ProblemOf(result), FileProblem::Missing) << name;
    }
    EXPECT_TRUE(platform::ListFolder(folder.MakeFolder("empty"), &result).empty());
    EXPECT_TRUE(result);
}

TEST(Files, CreatingFoldersAcceptsWhatIsThereUnlessItIsAFile)
{
    const CTemporaryFolder folder;
    folder.Write("file", "");
    const struct {
        const char* path;
        FileProblem problem;
    } rows[] = {{"a/b/c", FileProblem::None},   {"a/b/c", FileProblem::None},   {"a/b/d/", FileProblem::None},
                {"a//e", FileProblem::None},    {"file", FileProblem::Missing}, {"file/x", FileProblem::Missing},
                {"file/", FileProblem::Missing}};
    for (const auto& row : rows) {
        EXPECT_EQ(ProblemOf(platform::CreateFolders(folder.Path() + "/" + row.path)), row.problem) << row.path;
        EXPECT_TRUE(row.problem != FileProblem::None || platform::FolderExists(folder.Path() + "/" + row.path));
    }
    EXPECT_EQ(ProblemOf(platform::CreateFolders("")), FileProblem::Missing);
}

TEST(Files, ReadingStopsAtTheLimit)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("file", std::string("a\0b", 3));
    platform::FileResult result;
    EXPECT_EQ(platform::ReadWholeFile(path, 3, &result), std::string("a\0b", 3));
    EXPECT_FALSE(platform::ReadWholeFile(path, 2, &result));
    EXPECT_EQ(ProblemOf(result), FileProblem::TooLarge);
}

TEST(Files, StreamsKeepEveryByte)
{
    const CTemporaryFolder folder;
    const auto path = folder / "file";
    const auto write = [&](const char* mode, const std::string& bytes) {
        const auto stream = platform::OpenStream(path, mode);
        ASSERT_TRUE(stream) << mode;
        EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), stream.get()), bytes.size());
    };
    write("w", "one\ntwo\x1A\r\n");
    write("ab", "end\n");
    EXPECT_EQ(FileBytes(path), "one\ntwo\x1A\r\nend\n");
    char text[64] = "";
    EXPECT_EQ(std::fread(text, 1, sizeof text, platform::OpenStream(path, "r").get()), 14u);
    write("r+", "ONE");
    EXPECT_EQ(FileBytes(path).substr(0, 8), "ONE\ntwo\x1A");
    write("w", "");
    EXPECT_EQ(FileBytes(path), "");

    platform::FileResult result;
    EXPECT_FALSE(platform::OpenStream(path, "wx", &result));
    EXPECT_EQ(ProblemOf(result), FileProblem::Exists);
    EXPECT_FALSE(platform::OpenStream(folder / "missing", "rb", &result));
    EXPECT_EQ(ProblemOf(result), FileProblem::Missing);
    EXPECT_FALSE(platform::OpenStream(folder.Path(), "wb", &result));
    EXPECT_EQ(ProblemOf(result), FileProblem::IsAFolder);
    EXPECT_EQ(folder.EntryCount(), 1u);
}

TEST(Files, AnAtomicWriteLeavesNothingBesideTheFile)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("settings", "old");
    EXPECT_EQ(ProblemOf(platform::WriteFileAtomically(path, "new", Readers::Owner, platform::Existing::Fail)),
              FileProblem::Exists);
    EXPECT_EQ(FileBytes(path), "old");
    ASSERT_TRUE(platform::WriteFileAtomically(path, "new", Readers::Owner));
    EXPECT_EQ(FileBytes(path), "new");
    EXPECT_EQ(ProblemOf(platform::WriteFileAtomically(folder / "missing/x", "new", Readers::Owner)),
              FileProblem::Missing);
    EXPECT_EQ(folder.EntryCount(), 1u);
    EXPECT_EQ(ProblemOf(platform::WriteFileAtomically(folder.MakeFolder("folder"), "new", Readers::Owner)),
              FileProblem::IsAFolder);
}

TEST(Files, TwoSpellingsOfOneFolderHaveOneCanonicalPath)
{
    const CTemporaryFolder folder;
    const auto real = folder.MakeFolder("real");
    EXPECT_NE(platform::CanonicalPath(real), "");
    EXPECT_EQ(platform::CanonicalPath(real + "/.././real//"), platform::CanonicalPath(real));
    EXPECT_EQ(platform::CanonicalPath(real + "/.."), platform::CanonicalPath(folder.Path()));
    EXPECT_EQ(platform::CanonicalPath(folder / "missing"), "");
}

TEST(Files, EveryFailureHasASentence)
{
    for (int i = static_cast<int>(FileProblem::None) + 1; i <= static_cast<int>(FileProblem::Other); ++i) {
        const auto problem = static_cast<FileProblem>(i);
        const auto result = platform::Failure(problem);
        EXPECT_EQ(ProblemOf(result), problem) << result.errorNumber;
        const auto text = platform::ErrorText(result.errorNumber);
        EXPECT_GT(text.size(), 5u);
        EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos) << text;
    }
    EXPECT_TRUE(platform::Failure(FileProblem::None));
    EXPECT_EQ(ProblemOf({123456}), FileProblem::Other);
}

#ifndef _WIN32

TEST(Files, DeletingRemovesLinksAndCreatingFollowsThem)
{
    const CTemporaryFolder folder;
    std::filesystem::create_symlink(folder.MakeFolder("real"), folder / "link");
    EXPECT_TRUE(platform::CreateFolders(folder / "link/x"));
    EXPECT_TRUE(platform::CreateFolders(folder / "link"));
    EXPECT_TRUE(platform::FolderExists(folder / "real/x"));
    EXPECT_TRUE(platform::DeleteFile(folder / "link"));
    EXPECT_FALSE(platform::NameExists(folder / "link"));
    EXPECT_TRUE(platform::FolderExists(folder / "real/x"));
}

TEST(Files, NamesNeedNotBeText)
{
    const CTemporaryFolder folder;
    for (const char* name : {"\xFF", "\xC3\xA4", "z"}) folder.Write(name, "");
    std::filesystem::create_symlink(".", folder / "link");
    std::string order;
    for (const auto& entry : platform::ListFolder(folder.Path())) order += entry.name + (entry.isFolder ? "/ " : " ");
    EXPECT_EQ(order, "link/ z \xC3\xA4 \xFF ");
}

TEST(Files, AFileThatTellsNoSizeIsReadUpToTheLimit)
{
    platform::FileResult result;
    EXPECT_FALSE(platform::ReadWholeFile("/proc/self/maps", 10, &result));
    EXPECT_EQ(result.errorNumber, EFBIG);
}

TEST(Files, AnAtomicWriteGivesTheFileItsNewMode)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("settings", "old");
    std::filesystem::permissions(path, std::filesystem::perms(0666));
    ASSERT_TRUE(platform::WriteFileAtomically(path, "new", platform::Readers::Owner));
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(platform::WriteFileAtomically("/dev/null", "new", platform::Readers::Owner).errorNumber, EINVAL);
}

TEST(Files, LinksOfOneFolderHaveOneCanonicalPath)
{
    const CTemporaryFolder folder;
    const auto real = folder.MakeFolder("real");
    std::filesystem::create_symlink("../real", real + "/loop");
    EXPECT_EQ(platform::CanonicalPath(real + "/loop/loop/.."), platform::CanonicalPath(folder.Path()));
    EXPECT_EQ(platform::CanonicalPath(real + "/loop/loop"), platform::CanonicalPath(real));
}

#endif
