#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/AppendFile.h"
#include "platform/ChildProcess.h"
#include "platform/Clock.h"
#include "platform/FileLock.h"
#include "support/TemporaryFolder.h"

using platform::CAppendFile;
using platform::CFileLock;

TEST(RunFiles, AnAppendedFileGrowsBehindWhatCounts)
{
    const CTemporaryFolder folder;
    const auto path = folder / "journal";
    CAppendFile first;
    ASSERT_TRUE(first.Open(path));
    EXPECT_TRUE(first.Write("one\n"));
    EXPECT_TRUE(first.Write("tw"));
    EXPECT_TRUE(first.Flush());
    CAppendFile second;
    ASSERT_TRUE(second.Open(path));
    EXPECT_TRUE(second.Truncate(4));
    EXPECT_TRUE(second.Write("three\n"));
    EXPECT_EQ(FileBytes(path), "one\nthree\n");
    const CAppendFile taker(std::move(second));
    EXPECT_FALSE(second.IsOpen());
    EXPECT_EQ(second.Write("x").errorNumber, EBADF);
    EXPECT_EQ(first.Open(folder.Path()).errorNumber, EISDIR);
    EXPECT_EQ(first.Open("/dev/null").errorNumber, EINVAL) << "nothing would be on record";
    EXPECT_FALSE(first.IsOpen());
}

TEST(RunFiles, ALockIsHeldUntilTheLastChildThatInheritedItIsGone)
{
    const CTemporaryFolder folder;
    const auto path = folder / "lock";
    CFileLock other;
    std::optional<platform::CChildProcess> heir, stranger;
    {
        CFileLock lock;
        ASSERT_TRUE(lock.TryLock(path));
        EXPECT_TRUE(lock.TryLock(path)) << "once more: the former claim is given up";
        EXPECT_EQ(other.TryLock(path).errorNumber, EWOULDBLOCK);
        EXPECT_FALSE(other.IsLocked());
        const platform::ChildOptions options{.program = "/bin/sh", .arguments = {"-c", "read never"}};
        stranger = platform::CChildProcess::Start(options);
        auto inheriting = options;
        inheriting.inheritedDescriptors = {lock.Descriptor()};
        heir = platform::CChildProcess::Start(inheriting);
        ASSERT_TRUE(heir && stranger);
    }
    EXPECT_EQ(other.TryLock(path).errorNumber, EWOULDBLOCK);
    heir.reset();
    EXPECT_TRUE(other.TryLock(path)) << "the child that did not inherit it does not count";
    EXPECT_EQ(CFileLock().TryLock(folder / "missing/lock").errorNumber, ENOENT);
}

TEST(RunFiles, TimesAreUniversal)
{
    const struct {
        std::int64_t nanoseconds;
        const char* text;
    } rows[] = {{0, "1970-01-01T00:00:00Z"},
                {-1, "1969-12-31T23:59:59Z"},
                {1'709'208'000'999'999'999, "2024-02-29T12:00:00Z"}};
    for (const auto& row : rows) EXPECT_EQ(platform::UtcText(row.nanoseconds), row.text);
    EXPECT_GT(platform::UtcText(platform::NanosecondsSince1970()), "2025-01-01");
}
