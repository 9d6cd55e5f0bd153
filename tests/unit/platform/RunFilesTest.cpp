#include <gtest/gtest.h>

#include "base/PathNames.h"
#include "platform/Clock.h"
#include "platform/FileProblem.h"
#include "platform/HeldFiles.h"
#include "support/TemporaryFolder.h"
#include "unit/platform/ChildStory.h"

using platform::CAppendFile;
using platform::CChildProcess;
using platform::CFileLock;
using platform::FileProblem;
using platform::ProblemOf;

namespace {

const char* const kNoFile = kSeparator == '/' ? "/dev/null" : "NUL";

}  // namespace

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
    EXPECT_FALSE(second.Write("x"));
    EXPECT_EQ(ProblemOf(first.Open(folder.Path())), FileProblem::IsAFolder);
    EXPECT_EQ(ProblemOf(first.Open(kNoFile)), FileProblem::NotARegularFile) << "nothing would be on record";
    EXPECT_FALSE(first.IsOpen());
}

TEST(RunFiles, ALockKeepsOtherLocksOutButNoReadersAndWriters)
{
    const CTemporaryFolder folder;
    const auto path = folder / "journal";
    CFileLock lock, other;
    ASSERT_TRUE(lock.TryLock(path));
    EXPECT_TRUE(lock.TryLock(path)) << "once more: the former claim is given up";
    EXPECT_EQ(ProblemOf(other.TryLock(path)), FileProblem::InUse);
    EXPECT_FALSE(other.IsLocked());
    {
        CAppendFile journal;
        ASSERT_TRUE(journal.Open(path)) << "a shard's journal is its own lock";
        EXPECT_TRUE(journal.Write("one\n"));
        EXPECT_EQ(platform::ReadWholeFile(path, 100), "one\n");
        EXPECT_TRUE(platform::OpenStream(path, "rb"));
        EXPECT_EQ(ProblemOf(other.TryLock(path)), FileProblem::InUse);
    }
    const CFileLock taker(std::move(lock));
    EXPECT_EQ(ProblemOf(other.TryLock(path)), FileProblem::InUse);
    EXPECT_TRUE(platform::FileExists(path));
    EXPECT_EQ(ProblemOf(CFileLock().TryLock(folder / "missing/lock")), FileProblem::Missing);
}

TEST(RunFiles, ALockCanBeTakenBesideOpenJournals)
{
    const CTemporaryFolder folder;
    const auto path = folder / "journal";
    CAppendFile journal;
    ASSERT_TRUE(journal.Open(path));
    EXPECT_TRUE(CFileLock().TryLock(path));
    EXPECT_TRUE(CFileLock().TryLock(path)) << "the former one is gone";
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

TEST(RunFiles, ALockIsHeldUntilTheLastChildThatInheritedItIsGone)
{
    const CTemporaryFolder folder;
    const auto path = folder / "lock";
    CFileLock other;
    std::optional<CChildProcess> heir, stranger;
    {
        CFileLock lock;
        ASSERT_TRUE(lock.TryLock(path));
        const platform::ChildOptions options = WaitingChild();
        stranger = CChildProcess::Start(options);
        auto inheriting = options;
        inheriting.inheritedDescriptors = {lock.Descriptor()};
        heir = CChildProcess::Start(inheriting);
        ASSERT_TRUE(heir && stranger);
    }
    EXPECT_EQ(ProblemOf(other.TryLock(path)), FileProblem::InUse);
    heir.reset();
    EXPECT_TRUE(other.TryLock(path)) << "the child that did not inherit it does not count";
}
