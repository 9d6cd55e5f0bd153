#include <filesystem>

#include <gtest/gtest.h>

#include "platform/AtomicFile.h"
#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "platform/Handle_win.h"
#include "platform/HeldFiles.h"
#include "platform/Paths.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"
#include "support/TemporaryFolder.h"

#include <aclapi.h>
#include <sddl.h>

using platform::CopyFile;
using platform::Existing;
using platform::FileProblem;
using platform::FileResult;
using platform::MoveFile;
using platform::ProblemOf;
using platform::Readers;

namespace {

constexpr std::size_t kSavedBytes = 1'000'000;

std::string Content(const std::string& path) { return platform::ReadWholeFile(path, 1000).value_or("<unreadable>"); }

FileResult WriteAtomic(const std::string& path, Existing existing = Existing::Replace)
{
    platform::CAtomicFile file(path, existing);
    file.Write("new", 3);
    return file.Commit();
}

/// Holds a file open so that nobody else can have it.
platform::CHandle HoldFor(const std::string& path, DWORD share = 0)
{
    return platform::CHandle(
        CreateFileW(platform::WidePath(path).c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr));
}

void Mark(const std::string& path, DWORD attributes)
{
    ASSERT_TRUE(SetFileAttributesW(platform::WidePath(path).c_str(), attributes));
}

DWORD MarksOf(const std::string& path) { return GetFileAttributesW(platform::WidePath(path).c_str()); }

/// The access rights of a file as text.
std::string RightsOf(const std::string& path)
{
    const auto wide = platform::WidePath(path);
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    wchar_t* text = nullptr;
    if (GetNamedSecurityInfoW(wide.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, nullptr,
                              nullptr, &descriptor) != ERROR_SUCCESS)
        return "<none>";
    ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION,
                                                         &text, nullptr);
    const auto rights = platform::NarrowText(text ? text : L"<none>");
    LocalFree(text);
    LocalFree(descriptor);
    return rights;
}

std::string Names(const std::string& folder)
{
    std::string names;
    for (const auto& entry : platform::ListFolder(folder)) names += entry.name + '|';
    return names;
}

/// Everything that can be done with a name, in a folder that is empty before and afterwards.
void UseName(const std::string& folder, const std::string& name)
{
    SCOPED_TRACE(name);
    const auto path = folder + "\\" + name, other = folder + "\\other";
    ASSERT_TRUE(platform::WriteFileAtomically(path, "content", Readers::Owner));
    EXPECT_EQ(Names(folder), name + '|');
    EXPECT_EQ(Content(path), "content");
    EXPECT_EQ(platform::FileSize(path), 7u);
    EXPECT_TRUE(MoveFile(path, other, Existing::Fail));
    EXPECT_TRUE(CopyFile(other, path, Existing::Fail));
    EXPECT_TRUE(CopyFile(other, path, Existing::Replace));
    EXPECT_TRUE(platform::DeleteFile(other));
    EXPECT_TRUE(platform::OpenStream(path, "ab"));
    EXPECT_TRUE(WriteAtomic(path));
    EXPECT_EQ(Content(path), "new");
    EXPECT_TRUE(platform::DeleteFile(path));
    EXPECT_TRUE(platform::CreateFolders(path + "\\below"));
    EXPECT_EQ(Names(path), "below|");
    EXPECT_TRUE(RemoveDirectoryW(platform::WidePath(path + "\\below").c_str()));
    EXPECT_TRUE(RemoveDirectoryW(platform::WidePath(path).c_str()));
    EXPECT_EQ(Names(folder), "");
}

}  // namespace

TEST(FilesWindows, EveryNameOfTheFileSystemCanBeUsed)
{
    const CTemporaryFolder folder;
    for (const char* name : {"dot.", "dots..", "blank ", "\xF0\x9F\x98\x80.pdf", " first", "a%b'c.pdf", "COM10"}) {
        UseName(folder.Path(), name);
    }
    UseName(folder.Path(), std::string(251, 'n') + ".pdf");
}

TEST(FilesWindows, PathsMayBeLongerThanTheOldLimit)
{
    const CTemporaryFolder folder;
    std::string deep = folder.Path();
    for (int depth = 0; depth < 10; ++depth) deep += "\\" + std::string(60, static_cast<char>('a' + depth));
    ASSERT_TRUE(platform::CreateFolders(deep));
    UseName(deep, "file.pdf");
    UseName("\\\\?\\" + deep, "file.pdf");
    for (std::string path = deep; path.size() > folder.Path().size(); path.erase(path.rfind('\\'))) {
        EXPECT_TRUE(RemoveDirectoryW(platform::WidePath(path).c_str()));
    }
}

TEST(FilesWindows, NothingIsWrittenToDevicesNorIntoHiddenPartsOfFiles)
{
    const CTemporaryFolder folder;
    const auto source = folder.Write("source.pdf", "x");
    platform::CAppendFile journal;
    platform::CFileLock lock;
    platform::CLogFile log;
    for (const std::string& path : {folder / "NUL", folder / "con.pdf", folder / "COM1", std::string("NUL"),
                                    std::string("\\\\.\\NUL"), folder.Path() + "\\source.pdf:part"}) {
        SCOPED_TRACE(path);
        FileResult stream;
        platform::OpenStream(path, "wb", &stream);
        const FileResult results[] = {CopyFile(source, path, Existing::Fail),
                                      CopyFile(source, path, Existing::Replace),
                                      MoveFile(source, path, Existing::Fail),
                                      MoveFile(source, path, Existing::Replace),
                                      platform::WriteFileAtomically(path, "x", Readers::Owner),
                                      WriteAtomic(path),
                                      WriteAtomic(path, Existing::Fail),
                                      platform::CreateFolders(path),
                                      journal.Open(path),
                                      lock.TryLock(path),
                                      log.Open(path, true),
                                      stream};
        int number = 0;
        for (const auto& result : results) EXPECT_EQ(ProblemOf(result), FileProblem::NotARegularFile) << number++;
        EXPECT_EQ(Names(folder.Path()), "source.pdf|");
        EXPECT_EQ(Content(source), "x");
    }
    EXPECT_EQ(ProblemOf(platform::CheckReadable("NUL")), FileProblem::NotARegularFile);
    EXPECT_EQ(ProblemOf(platform::CheckReadable(folder / "CON")), FileProblem::NotARegularFile);
    EXPECT_EQ(ProblemOf(platform::CheckReadable("\\\\.\\NUL")), FileProblem::NotARegularFile);
    EXPECT_EQ(ProblemOf(platform::CheckReadable(folder.Path() + "\\a?c")), FileProblem::NotARegularFile);
}

TEST(FilesWindows, ReadOnlyFilesAreMovedButNeitherReplacedNorDeleted)
{
    const CTemporaryFolder folder;
    const auto marked = folder.Write("marked", "old"), source = folder.Write("source", "new");
    Mark(marked, FILE_ATTRIBUTE_READONLY);
    const FileResult results[] = {
        CopyFile(source, marked, Existing::Replace), MoveFile(source, marked, Existing::Replace), WriteAtomic(marked),
        platform::WriteFileAtomically(marked, "new", Readers::Owner), platform::DeleteFile(marked)};
    for (const auto& result : results) EXPECT_EQ(result.errorNumber, ERROR_ACCESS_DENIED);
    EXPECT_EQ(Content(marked), "old");
    EXPECT_EQ(Names(folder.Path()), "marked|source|");
    EXPECT_TRUE(CopyFile(marked, folder / "copy", Existing::Fail));
    EXPECT_TRUE(MoveFile(marked, folder / "moved", Existing::Fail));
    for (const char* name : {"copy", "moved"}) {
        EXPECT_NE(MarksOf(folder / name) & FILE_ATTRIBUTE_READONLY, 0u) << name;
        EXPECT_EQ(Content(folder / name), "old");
        Mark(folder / name, FILE_ATTRIBUTE_NORMAL);
    }
}

TEST(FilesWindows, HiddenFilesStayHiddenWhenTheyAreReplaced)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("hidden", "old");
    Mark(path, FILE_ATTRIBUTE_HIDDEN);
    EXPECT_TRUE(WriteAtomic(path));
    EXPECT_EQ(Content(path), "new");
    const auto listed = platform::ListFolder(folder.Path());
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_TRUE(listed[0].isHidden);
    EXPECT_FALSE(listed[0].isFolder);
}

TEST(FilesWindows, AFileHandsItsOwnAccessRightsOn)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("own", "old"), usual = folder.Write("usual", "");
    PSECURITY_DESCRIPTOR everybody = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;;FA;;;WD)", SDDL_REVISION_1, &everybody,
                                                                     nullptr));
    ASSERT_TRUE(SetFileSecurityW(platform::WidePath(path).c_str(), DACL_SECURITY_INFORMATION, everybody));
    LocalFree(everybody);
    EXPECT_TRUE(platform::OthersMayRead(path));
    EXPECT_FALSE(platform::OthersMayRead(folder / "gone"));
    const auto before = RightsOf(path);
    ASSERT_NE(before, RightsOf(usual));
    EXPECT_TRUE(WriteAtomic(path));
    EXPECT_EQ(Content(path), "new");
    EXPECT_EQ(RightsOf(path), before);
    EXPECT_TRUE(CopyFile(path, folder / "copy", Existing::Fail));
    EXPECT_EQ(RightsOf(folder / "copy"), before);
    for (const bool isThere : {true, false}) {
        platform::CAtomicFile result(folder / "result", Existing::Replace, isThere ? path : folder / "gone");
        EXPECT_TRUE(result.Commit());
        EXPECT_EQ(RightsOf(folder / "result"), before) << "what is replaced has rights of its own the second time";
    }
    platform::CAtomicFile orphan(folder / "orphan", Existing::Fail, folder / "gone");
    EXPECT_TRUE(orphan.Commit());
    EXPECT_NE(RightsOf(folder / "orphan"), RightsOf(usual));
    EXPECT_TRUE(WriteAtomic(usual));
    EXPECT_TRUE(WriteAtomic(folder / "another"));
    EXPECT_EQ(RightsOf(usual), RightsOf(folder / "another"));
}

TEST(FilesWindows, WhatOthersHoldIsInUseAndStays)
{
    const CTemporaryFolder folder;
    const auto held = folder.Write("held", "old"), source = folder.Write("source", "new");
    {
        const auto holder = HoldFor(held);
        ASSERT_TRUE(holder.Valid());
        EXPECT_EQ(ProblemOf(platform::CheckReadable(held)), FileProblem::InUse);
        EXPECT_EQ(platform::CheckReadable(held).errorNumber, ERROR_SHARING_VIOLATION);
        EXPECT_EQ(ProblemOf(platform::DeleteFile(held)), FileProblem::InUse);
        EXPECT_EQ(ProblemOf(MoveFile(held, folder / "moved", Existing::Fail)), FileProblem::InUse);
        EXPECT_EQ(ProblemOf(CopyFile(held, folder / "copied", Existing::Fail)), FileProblem::InUse);
        EXPECT_EQ(ProblemOf(platform::CLogFile().Open(held, true)), FileProblem::InUse);
        EXPECT_TRUE(platform::FileExists(held));
        EXPECT_EQ(platform::FileSize(held), 3u) << "what can be told without opening the file";
        EXPECT_FALSE(CopyFile(source, held, Existing::Replace));
        EXPECT_FALSE(MoveFile(source, held, Existing::Replace));
        EXPECT_FALSE(WriteAtomic(held));
    }
    EXPECT_EQ(Content(held), "old");
    EXPECT_EQ(Content(source), "new");
    EXPECT_EQ(Names(folder.Path()), "held|source|");
    const auto reader = HoldFor(held, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    EXPECT_TRUE(CopyFile(held, folder / "copied", Existing::Fail)) << "readers disturb nobody";
}

TEST(FilesWindows, TwoLetterCasesAreOneFile)
{
    const CTemporaryFolder folder;
    const auto lower = folder.Write("\xC3\xA4.pdf", "content"), upper = folder / "\xC3\x84.PDF";
    EXPECT_TRUE(platform::FileExists(upper));
    EXPECT_EQ(ProblemOf(CopyFile(lower, upper, Existing::Replace)), FileProblem::NotARegularFile);
    EXPECT_EQ(ProblemOf(MoveFile(lower, upper, Existing::Fail)), FileProblem::Exists);
    EXPECT_EQ(platform::CanonicalPath(upper), platform::CanonicalPath(lower));
    EXPECT_TRUE(MoveFile(lower, upper, Existing::Replace));
    const auto names = Names(folder.Path());
    EXPECT_TRUE(names == "\xC3\x84.PDF|" || names == "\xC3\xA4.pdf|") << names << ": emulators keep the old letters";
    EXPECT_EQ(Content(lower), "content");
}

TEST(FilesWindows, LinksToFoldersAreFoldersAndLeadToOnePlace)
{
    const CTemporaryFolder folder;
    const auto real = folder.MakeFolder("real"), link = folder / "link";
    const DWORD kind = SYMBOLIC_LINK_FLAG_DIRECTORY | SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE;
    if (!CreateSymbolicLinkW(platform::WidePath(link).c_str(), platform::WidePath(real).c_str(), kind) ||
        !platform::NameExists(link))
        GTEST_SKIP() << "this system makes no links";
    folder.Write("real/file", "x");
    EXPECT_TRUE(platform::FolderExists(link));
    EXPECT_EQ(platform::CanonicalPath(link), platform::CanonicalPath(real));
    EXPECT_EQ(Names(link), "file|");
    EXPECT_TRUE(platform::DeleteFile(link)) << "the link, not what it leads to";
    EXPECT_EQ(Names(real), "file|");
}

// Started by the test below.
TEST(FilesWindows, DISABLED_SavesUntilItIsKilled)
{
    const auto path = platform::EnvironmentText("FERRULE_TEST_PATH");
    for (int turn = 0; turn < 100'000; ++turn) {
        const std::string bytes(kSavedBytes, turn % 2 == 0 ? 'a' : 'b');
        ASSERT_TRUE(platform::WriteFileAtomically(path, bytes, Readers::Owner));
        std::puts("saved");
        std::fflush(stdout);
    }
}

TEST(FilesWindows, WhoIsKilledWhileSavingLeavesTheOldFileOrTheNewOne)
{
    for (int turns = 1; turns < 20; turns += 3) {
        const CTemporaryFolder folder;
        const auto path = folder.Write("file", "");
        auto saver = platform::CChildProcess::Start(
            {.program = platform::ExecutablePath(),
             .arguments = {"--gtest_also_run_disabled_tests", "--gtest_filter=*.DISABLED_SavesUntilItIsKilled"},
             .environment = {"FERRULE_TEST_PATH=" + path}});
        ASSERT_TRUE(saver);
        platform::CChildWatch watch;
        for (int seen = 0; seen < turns;) {
            const auto news = watch.Wait({&*saver}, 30'000);
            ASSERT_TRUE(news && news->event != platform::ChildEvent::Ended);
            seen += news->text.starts_with("saved");
        }
        saver.reset();
        const auto bytes = FileBytes(path);
        EXPECT_EQ(bytes, std::string(kSavedBytes, bytes.empty() ? '?' : bytes.front()));
        EXPECT_LE(folder.EntryCount(), 2u) << "more than one unfinished file";
    }
}

TEST(FilesWindows, AnUnknownFailureGoesByItsNumber)
{
    EXPECT_EQ(platform::ErrorText(0x3FFFFFFF), "error 1073741823");
}
