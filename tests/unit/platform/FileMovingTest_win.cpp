#include <gtest/gtest.h>

#include "MovingRows.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"
#include "support/TemporaryFolder.h"

using platform::CopyFile;
using platform::Existing;
using platform::FileProblem;
using platform::MoveFile;
using platform::ProblemOf;

namespace {

std::shared_ptr<void> AFileMarked(const std::string& path, DWORD attributes)
{
    std::ofstream(path) << "old";
    SetFileAttributesW(platform::WidePath(path).c_str(), attributes);
    // Afterwards it must be possible to remove it with the test's folder.
    return {nullptr, [path](void*) { SetFileAttributesW(platform::WidePath(path).c_str(), FILE_ATTRIBUTE_NORMAL); }};
}

std::shared_ptr<void> AReadOnlyFile(const std::string& path) { return AFileMarked(path, FILE_ATTRIBUTE_READONLY); }

std::shared_ptr<void> AHiddenFile(const std::string& path) { return AFileMarked(path, FILE_ATTRIBUTE_HIDDEN); }

/// Held so that nobody may take it away.
std::shared_ptr<void> Hold(const std::string& path)
{
    HANDLE held = CreateFileW(platform::WidePath(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              0, nullptr);
    return {held, CloseHandle};
}

/// A folder that this process cannot rename files into from the temporary folder.
bool IsElsewhere(const std::string& candidate)
{
    const CTemporaryFolder here;
    const auto from = here.Write("probe", "");
    const auto to = candidate + "\\ferrule-probe-" + std::to_string(GetCurrentProcessId());
    const bool moved = MoveFileExW(platform::WidePath(from).c_str(), platform::WidePath(to).c_str(), 0);
    const DWORD error = GetLastError();
    if (moved) DeleteFileW(platform::WidePath(to).c_str());
    return !moved && error == ERROR_NOT_SAME_DEVICE;
}

}  // namespace

std::vector<MovingRow> RowsOfThisSystem()
{
    return {{"read-only file", AReadOnlyFile, Existing::Fail, FileProblem::Exists},
            {"read-only file, replace", AReadOnlyFile, Existing::Replace, FileProblem::NoAccess},
            {"hidden file", AHiddenFile, Existing::Fail, FileProblem::Exists},
            {"hidden file, replace", AHiddenFile, Existing::Replace, FileProblem::None}};
}

std::optional<std::string> OtherFileSystem()
{
    // The second is what the emulator shows of the system around it.
    for (const char* candidate : {"D:", "Z:\\dev\\shm", "E:"}) {
        if (platform::FolderExists(std::string(candidate) + "\\") && IsElsewhere(candidate))
            return std::string(candidate) + "\\";
    }
    return std::nullopt;
}

TEST(FileMovingWindows, ASourceThatOthersHoldIsNotThereTwice)
{
    const auto other = OtherFileSystem();
    const CTemporaryFolder here, there{other.value_or("")};
    const auto from = here.Write("a.pdf", "content"), old = there.Write("old.pdf", "old");
    {
        const auto holder = Hold(from);
        for (const auto& to : {there / "b.pdf", old}) {
            EXPECT_EQ(ProblemOf(MoveFile(from, to, Existing::Replace)), FileProblem::InUse);
        }
        EXPECT_EQ(ProblemOf(MoveFile(from, there / "b.pdf", Existing::Fail)), FileProblem::InUse);
    }
    EXPECT_EQ(FileBytes(from), "content");
    EXPECT_EQ(FileBytes(old), "old");
    EXPECT_EQ(there.EntryCount(), 1u);
}

TEST(FileMovingWindows, AReadOnlySourceMovesToAnotherFileSystemWithItsMark)
{
    const auto other = OtherFileSystem();
    if (!other) GTEST_SKIP() << "this machine has one file system only";
    const CTemporaryFolder here, there{*other};
    const auto from = here.Write("a.pdf", "content"), to = there / "b.pdf";
    ASSERT_TRUE(SetFileAttributesW(platform::WidePath(from).c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(MoveFile(from, to, Existing::Fail));
    EXPECT_FALSE(platform::NameExists(from));
    EXPECT_EQ(FileBytes(to), "content");
    EXPECT_NE(GetFileAttributesW(platform::WidePath(to).c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
    SetFileAttributesW(platform::WidePath(to).c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(FileMovingWindows, WhatAScannerHoldsForAMomentIsTriedAgain)
{
    const CTemporaryFolder folder;
    const auto from = folder.Write("a.pdf", "content"), to = folder / "b.pdf";
    struct Scanner {
        std::shared_ptr<void> holder;
        HANDLE timer = nullptr;
    } scanner{Hold(from)};
    const auto letGo = [](void* found, BOOLEAN) { static_cast<Scanner*>(found)->holder.reset(); };
    constexpr DWORD kMilliseconds = 30;
    ASSERT_TRUE(
        CreateTimerQueueTimer(&scanner.timer, nullptr, letGo, &scanner, kMilliseconds, 0, WT_EXECUTEONLYONCE));
    EXPECT_TRUE(MoveFile(from, to, Existing::Fail));
    EXPECT_EQ(FileBytes(to), "content");
    ASSERT_TRUE(DeleteTimerQueueTimer(nullptr, scanner.timer, INVALID_HANDLE_VALUE));
}
