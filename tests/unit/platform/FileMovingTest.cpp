#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "platform/FileHandles_posix.h"
#include "platform/FileSteps.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"

using platform::CopyFile;
using platform::Existing;
using platform::MoveFile;
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

/// A folder on another file system than the temporary folder; nothing when the machine has none.
std::optional<std::string> OtherFileSystem()
{
    for (const char* candidate : {"/dev/shm", "/run", "/var/tmp"}) {
        const bool usable = access(candidate, W_OK | X_OK) == 0;
        if (usable && DeviceOf(candidate) != DeviceOf(fs::temp_directory_path().string())) return candidate;
    }
    return std::nullopt;
}

enum class Target { Absent, File, Folder, DanglingLink, Pipe };

void MakeTarget(const std::string& path, Target kind)
{
    if (kind == Target::File) std::ofstream(path) << "old";
    if (kind == Target::Folder) fs::create_directory(path);
    if (kind == Target::DanglingLink) fs::create_symlink("nowhere", path);
    if (kind == Target::Pipe && mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
}

struct Row {
    const char* what;
    Target target;
    Existing existing;
    int error;
};
const Row kRows[] = {
    {"free name", Target::Absent, Existing::Fail, 0},
    {"free name, replace", Target::Absent, Existing::Replace, 0},
    {"existing file", Target::File, Existing::Fail, EEXIST},
    {"existing file, replace", Target::File, Existing::Replace, 0},
    {"folder", Target::Folder, Existing::Fail, EISDIR},
    {"folder, replace", Target::Folder, Existing::Replace, EISDIR},
    {"dangling link", Target::DanglingLink, Existing::Fail, EEXIST},
    {"dangling link, replace", Target::DanglingLink, Existing::Replace, 0},
    {"pipe", Target::Pipe, Existing::Fail, EEXIST},
    {"pipe, replace", Target::Pipe, Existing::Replace, EINVAL},
};

/// Runs every row from one folder into another; the target of a failure and the source must be as before.
void CheckRows(const std::string& targetParent, bool move)
{
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.what);
        const CTemporaryFolder source, target{targetParent};
        const auto from = source.Write("a.pdf", "new"), to = target / "b.pdf";
        MakeTarget(to, row.target);
        const auto before = fs::symlink_status(to).type();
        const auto result = move ? MoveFile(from, to, row.existing) : CopyFile(from, to, row.existing);
        EXPECT_EQ(result.errorNumber, row.error);
        EXPECT_EQ(FileBytes(from), move && row.error == 0 ? "<missing>" : "new");
        if (row.error == 0) {
            EXPECT_EQ(FileBytes(to), "new");
        } else {
            EXPECT_EQ(fs::symlink_status(to).type(), before);
            EXPECT_TRUE(row.target != Target::File || FileBytes(to) == "old");
        }
        // A link is kept by a copy and given up by a move.
        const bool besideLink = row.error == 0 && !move && row.target == Target::DanglingLink;
        EXPECT_EQ(target.EntryCount(), besideLink ? 2u : 1u) << "leftovers";
    }
}

}  // namespace

TEST(FileMoving, CopyingObeysWhatStandsAtTheTarget) { CheckRows({}, false); }

TEST(FileMoving, MovingObeysWhatStandsAtTheTarget) { CheckRows({}, true); }

TEST(FileMoving, MovingAcrossFileSystemsObeysTheSameRules)
{
    const auto other = OtherFileSystem();
    if (!other) GTEST_SKIP() << "this machine has one file system only";
    CheckRows(*other, true);
}

TEST(FileMoving, AFileMovedOrCopiedOntoItselfSurvives)
{
    enum class Way { SamePath, OtherSpelling, HardLink, LinkToIt, LinkMovedOntoIt };
    const struct {
        Way way;
        int moveReplace;
        bool sourceRemains;
    } rows[] = {{Way::SamePath, 0, true},
                {Way::OtherSpelling, 0, true},
                {Way::HardLink, 0, false},
                {Way::LinkToIt, 0, false},
                {Way::LinkMovedOntoIt, EINVAL, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.way));
        const CTemporaryFolder folder;
        std::string from = folder.Write("a.pdf", "content"), to = from;
        if (row.way == Way::OtherSpelling) to = folder / "./a.pdf";
        if (row.way == Way::HardLink) fs::create_hard_link(from, to = folder / "b.pdf");
        if (row.way == Way::LinkToIt) fs::create_symlink(from, to = folder / "b.pdf");
        if (row.way == Way::LinkMovedOntoIt) fs::create_symlink(to, from = folder / "link.pdf");

        EXPECT_EQ(CopyFile(from, to, Existing::Fail).errorNumber, EEXIST);
        EXPECT_EQ(CopyFile(from, to, Existing::Replace).errorNumber, EINVAL);
        EXPECT_EQ(MoveFile(from, to, Existing::Fail).errorNumber, EEXIST);
        EXPECT_EQ(FileBytes(from), "content");
        EXPECT_EQ(MoveFile(from, to, Existing::Replace).errorNumber, row.moveReplace);
        EXPECT_EQ(FileBytes(to), "content");
        EXPECT_EQ(platform::NameExists(from), row.sourceRemains);
    }
}

TEST(FileMoving, ReplacingThroughALinkKeepsTheLink)
{
    const CTemporaryFolder folder;
    const auto real = folder.Write("real", "old"), link = folder / "link";
    fs::create_symlink("real", link);
    EXPECT_TRUE(CopyFile(folder.Write("source", "new"), link, Existing::Replace));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(FileBytes(real), "new");
    EXPECT_TRUE(platform::WriteFileAtomically(link, "newer", 0600));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(FileBytes(real), "newer");
}

TEST(FileMoving, WhenTheDiskFillsUpNothingIsLostOrHalfWritten)
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
            written = platform::WriteFileAtomically(to, big, 0600).errorNumber;
        }
        EXPECT_EQ(copied, EFBIG);
        EXPECT_EQ(moved, EFBIG);
        EXPECT_EQ(written, EFBIG);
        EXPECT_EQ(FileBytes(from).size(), big.size());
        EXPECT_EQ(FileBytes(to), existing == Existing::Replace ? "old" : "<missing>");
        EXPECT_EQ(target.EntryCount(), existing == Existing::Replace ? 1u : 0u) << "leftovers";
    }
}

TEST(FileMoving, AFolderThatForbidsWritingStopsEveryOperation)
{
    const auto other = OtherFileSystem();
    const CTemporaryFolder locked, open{other.value_or("")};
    const auto from = locked.Write("a.pdf", "content"), to = open / "b.pdf", inside = locked / "c.pdf";
    fs::permissions(from, fs::perms(0644));
    fs::permissions(open.Path(), fs::perms(0777));
    fs::permissions(locked.Path(), fs::perms(0555));
    {
        const CWithoutPrivileges nobody;
        EXPECT_EQ(MoveFile(from, to, Existing::Fail).errorNumber, EACCES);
        EXPECT_EQ(MoveFile(from, to, Existing::Replace).errorNumber, EACCES);
        EXPECT_EQ(CopyFile(from, inside, Existing::Fail).errorNumber, EACCES);
        EXPECT_EQ(platform::DeleteFile(from).errorNumber, EACCES);
    }
    EXPECT_EQ(FileBytes(from), "content");
    EXPECT_EQ(open.EntryCount(), 0u);
}

TEST(FileMoving, ASourceThatCannotBeRemovedIsNotThereTwice)
{
    if (geteuid() != 0) GTEST_SKIP() << "needs files of two users";
    const auto other = OtherFileSystem();
    const CTemporaryFolder shared, open{other.value_or("")};
    const auto from = shared.Write("a.pdf", "content");
    fs::permissions(from, fs::perms(0644));
    fs::permissions(open.Path(), fs::perms(0777));
    fs::permissions(shared.Path(), fs::perms(01777));  // anyone may add files, but only owners take theirs away
    {
        const CWithoutPrivileges nobody;
        EXPECT_EQ(MoveFile(from, open / "b.pdf", Existing::Fail).errorNumber, EPERM);
    }
    EXPECT_EQ(FileBytes(from), "content");
    EXPECT_EQ(open.EntryCount(), 0u);
}

TEST(FileMoving, AmongManyAtOnceOnlyOneGetsTheName)
{
    constexpr int kThreads = 8;
    for (const bool move : {false, true}) {
        const CTemporaryFolder folder;
        std::vector<std::string> sources;
        for (int i = 0; i < kThreads; ++i)
            sources.push_back(folder.Write("s" + std::to_string(i), std::to_string(i)));
        std::atomic<int> winners{0}, refused{0};
        std::vector<std::thread> threads;
        for (const auto& source : sources) {
            threads.emplace_back([&, to = folder / "target"] {
                const auto result =
                    move ? MoveFile(source, to, Existing::Fail) : CopyFile(source, to, Existing::Fail);
                ++(result ? winners : refused);
            });
        }
        for (auto& thread : threads) thread.join();
        EXPECT_EQ(winners, 1);
        EXPECT_EQ(refused, kThreads - 1);
        EXPECT_EQ(folder.EntryCount(), move ? kThreads : kThreads + 1u);
    }
}

TEST(FileMoving, EveryWayOfRenamingWithoutReplacingKeepsBothFiles)
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

TEST(FileMoving, NamesAreBytes)
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

TEST(FileMoving, ACopyKeepsModeAndTimeStamp)
{
    const CTemporaryFolder folder;
    const auto from = folder.Write("a", "x"), to = folder / "b";
    fs::permissions(from, fs::perms(0640));
    const auto then = fs::last_write_time(from) - std::chrono::hours(1000);
    fs::last_write_time(from, then);
    ASSERT_TRUE(CopyFile(from, to, Existing::Fail));
    EXPECT_EQ(fs::status(to).permissions(), fs::perms(0640));
    EXPECT_EQ(fs::last_write_time(to), then);
}
