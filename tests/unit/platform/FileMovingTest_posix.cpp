#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <stdexcept>

#include <gtest/gtest.h>

#include "FileActs.h"
#include "MovingRows.h"
#include "platform/FileHandles_posix.h"
#include "platform/FileSteps.h"
#include "support/TemporaryFolder.h"

using platform::CopyFile;
using platform::Existing;
using platform::FileProblem;
using platform::MoveFile;
using platform::Readers;
namespace fs = std::filesystem;

namespace {

/// No file may grow beyond so many bytes: the nearest thing to a full disk.
class CFileSizeLimit {
public:
    explicit CFileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~CFileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

/// Root may write everywhere, so tests of permissions act as somebody else.
class CWithoutPrivileges {
public:
    CWithoutPrivileges() { m_changed = geteuid() == 0 && seteuid(65534) == 0; }
    ~CWithoutPrivileges()
    {
        if (m_changed) (void)!seteuid(0);
    }

private:
    bool m_changed;
};

dev_t DeviceOf(const std::string& path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_dev : 0;
}

std::shared_ptr<void> ADanglingLink(const std::string& path)
{
    fs::create_symlink("nowhere", path);
    return nullptr;
}

std::shared_ptr<void> APipe(const std::string& path)
{
    if (mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
    return nullptr;
}

}  // namespace

std::optional<std::string> OtherFileSystem()
{
    for (const char* candidate : {"/dev/shm", "/run", "/var/tmp"}) {
        const bool usable = access(candidate, W_OK | X_OK) == 0;
        if (usable && DeviceOf(candidate) != DeviceOf(fs::temp_directory_path().string())) return candidate;
    }
    return std::nullopt;
}

std::vector<MovingRow> RowsOfThisSystem()
{
    return {{"dangling link", ADanglingLink, Existing::Fail, FileProblem::Exists},
            {"dangling link, replace", ADanglingLink, Existing::Replace, FileProblem::None},
            {"pipe", APipe, Existing::Fail, FileProblem::Exists},
            {"pipe, replace", APipe, Existing::Replace, FileProblem::NotARegularFile}};
}

TEST(FileMovingPosix, AFileMovedOrCopiedOntoItselfThroughALinkSurvives)
{
    for (const bool linkIsTarget : {true, false}) {
        SCOPED_TRACE(linkIsTarget);
        const CTemporaryFolder folder;
        const auto file = folder.Write("a.pdf", "content"), link = folder / "b.pdf";
        fs::create_symlink(file, link);
        const auto &from = linkIsTarget ? file : link, &to = linkIsTarget ? link : file;
        EXPECT_EQ(CopyFile(from, to, Existing::Fail).errorNumber, EEXIST);
        EXPECT_EQ(CopyFile(from, to, Existing::Replace).errorNumber, linkIsTarget ? 0 : EINVAL);
        EXPECT_EQ(MoveFile(from, to, Existing::Fail).errorNumber, EEXIST);
        EXPECT_EQ(MoveFile(from, to, Existing::Replace).errorNumber, linkIsTarget ? 0 : EINVAL);
        EXPECT_EQ(FileBytes(to), "content");
        EXPECT_EQ(platform::NameExists(from), !linkIsTarget);
    }
}

TEST(FileMovingPosix, ALinkInTheWayIsReplacedAndNeverFollowed)
{
    for (const auto& act : {Copying(Existing::Replace), Writing(Existing::Replace), WritingSettings()}) {
        for (const char* leadsTo : {"victim", "nowhere", "link", "."}) {
            SCOPED_TRACE(leadsTo);
            const CTemporaryFolder folder;
            const auto victim = folder.Write("victim", "old"), link = folder / "link";
            fs::create_symlink(leadsTo, link);
            EXPECT_TRUE(act(folder.Write("source", "new"), link));
            EXPECT_FALSE(fs::is_symlink(link));
            EXPECT_EQ(FileBytes(link), "new");
            EXPECT_EQ(FileBytes(victim), "old");
            EXPECT_EQ(folder.EntryCount(), 3u);
        }
    }
}

TEST(FileMovingPosix, WhenTheDiskFillsUpNothingIsLostOrHalfWritten)
{
    const auto other = OtherFileSystem();
    const std::string big(200'000, 'x');
    for (const auto existing : {Existing::Fail, Existing::Replace}) {
        const CTemporaryFolder source, target{other.value_or("")};
        const auto from = source.Write("a.pdf", big), to = target / "b.pdf";
        if (existing == Existing::Replace) target.Write("b.pdf", "old");
        int copied = 0, moved = EFBIG, written = 0;
        {
            const CFileSizeLimit limit(70'000);
            copied = CopyFile(from, to, existing).errorNumber;
            if (other) moved = MoveFile(from, to, existing).errorNumber;
            written = platform::WriteFileAtomically(to, big, Readers::Owner).errorNumber;
        }
        EXPECT_EQ(copied, EFBIG);
        EXPECT_EQ(moved, EFBIG);
        EXPECT_EQ(written, EFBIG);
        EXPECT_EQ(FileBytes(from).size(), big.size());
        EXPECT_EQ(FileBytes(to), existing == Existing::Replace ? "old" : "<missing>");
        EXPECT_EQ(target.EntryCount(), existing == Existing::Replace ? 1u : 0u) << "leftovers";
    }
}

TEST(FileMovingPosix, WhatMayNotBeTakenAwayIsNotThereTwice)
{
    const std::pair<unsigned, int> rows[] = {{0555, EACCES}, {01777, EPERM}};  // in the second only owners take away
    for (const auto& [mode, error] : rows) {
        if (error == EPERM && geteuid() != 0) GTEST_SKIP() << "needs files of two users";
        SCOPED_TRACE(error);
        const auto other = OtherFileSystem();
        const CTemporaryFolder locked, open{other.value_or("")};
        const auto from = locked.Write("a.pdf", "content"), to = open / "b.pdf";
        fs::permissions(from, fs::perms(0644));
        fs::permissions(open.Path(), fs::perms(0777));
        fs::permissions(locked.Path(), fs::perms(mode));
        {
            const CWithoutPrivileges nobody;
            EXPECT_EQ(MoveFile(from, to, Existing::Fail).errorNumber, error);
            if (error == EACCES) {
                EXPECT_EQ(MoveFile(from, to, Existing::Replace).errorNumber, error);
            }
            EXPECT_EQ(platform::DeleteFile(from).errorNumber, error);
            EXPECT_EQ(CopyFile(from, locked / "c.pdf", Existing::Fail).errorNumber, error == EACCES ? EACCES : 0);
        }
        EXPECT_EQ(FileBytes(from), "content");
        EXPECT_EQ(open.EntryCount(), 0u);
    }
}

TEST(FileMovingPosix, EveryWayOfRenamingWithoutReplacingKeepsBothFiles)
{
    for (const auto rename : {platform::RenameExclusively, platform::RenameByLink, platform::RenameOverClaim}) {
        const CTemporaryFolder folder;
        const auto from = folder.Write("from", "new"), taken = folder.Write("taken", "old");
        EXPECT_EQ(rename(from, taken).errorNumber, EEXIST);
        EXPECT_EQ(FileBytes(from), "new");
        EXPECT_EQ(FileBytes(taken), "old");
        EXPECT_EQ(rename(folder / "missing", folder / "free").errorNumber, ENOENT);
        EXPECT_FALSE(platform::NameExists(folder / "free"));
        EXPECT_TRUE(rename(from, folder / "free"));
        EXPECT_EQ(FileBytes(folder / "free"), "new");
        EXPECT_EQ(folder.EntryCount(), 2u);
    }
}

TEST(FileMovingPosix, NamesAreBytes)
{
    const CTemporaryFolder folder;
    const std::string names[] = {std::string(251, 'n') + ".pdf", "caf\xE9 \xFF.pdf", " \"quoted\" .pdf", "-rf\n.pdf"};
    for (const auto& name : names) {
        const auto from = folder.Write("source", name);
        const auto target = folder.MakeFolder("target") + "/" + name;
        EXPECT_TRUE(CopyFile(from, target, Existing::Fail)) << name;
        EXPECT_TRUE(MoveFile(from, target, Existing::Replace)) << name;
        EXPECT_EQ(FileBytes(target), name);
        const auto listed = platform::ListFolder(folder / "target");
        ASSERT_EQ(listed.size(), 1u);
        EXPECT_EQ(listed[0].name, name);
        EXPECT_TRUE(platform::DeleteFile(target));
    }
    const auto tooLong = folder / std::string(256, 'n');
    EXPECT_EQ(CopyFile(folder.Write("source", ""), tooLong, Existing::Fail).errorNumber, ENAMETOOLONG);
}
