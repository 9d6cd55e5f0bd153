#include <gtest/gtest.h>

#include "base/Names.h"
#include "platform/Files.h"
#include "platform/HeldFiles.h"
#include "support/TemporaryFolder.h"
#include "unit/platform/ChildStory.h"

using platform::CAppendFile;
using platform::CChildProcess;
using platform::CFileLock;
using platform::CLogFile;
using platform::FileProblem;
using platform::ProblemOf;

namespace {

const char* const kNoFile = kSeparator == '/' ? "/dev/null" : "NUL";

}  // namespace

TEST(HeldFiles, AnAppendedFileGrowsBehindWhatCounts)
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

TEST(HeldFiles, ALockKeepsOtherLocksOutButNoReadersAndWriters)
{
    const CTemporaryFolder folder;
    const auto path = folder / "journal";
    CFileLock lock, other;
    {
        CAppendFile journal;
        ASSERT_TRUE(journal.Open(path));
        EXPECT_TRUE(CFileLock().TryLock(path)) << "a journal that is open already";
    }
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

TEST(HeldFiles, ALockIsHeldUntilTheLastChildThatInheritedItIsGone)
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

TEST(HeldFiles, ASecondWriterOfALogIsRefusedAndDoesNoHarm)
{
    const CTemporaryFolder folder;
    const auto path = folder / "log";
    CLogFile first, second;
    ASSERT_TRUE(first.Open(path, true));
    ASSERT_TRUE(first.Write("one\n"));
    EXPECT_EQ(ProblemOf(second.Open(path, false)), FileProblem::InUse);
    EXPECT_FALSE(second.IsOpen());
    EXPECT_EQ(FileBytes(path), "one\n") << "readers are welcome, and the refused writer must not empty the file";
    first.Close();
    EXPECT_TRUE(second.Open(path, true));
    EXPECT_EQ(FileBytes(path), "one\n");
}

TEST(HeldFiles, ALogIsWrittenAtItsEnd)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("log", "old");
    CLogFile log;
    ASSERT_TRUE(log.Open(path, true));
    EXPECT_TRUE(log.SeekEnd());
    EXPECT_TRUE(log.Write("+new"));
    EXPECT_TRUE(log.Flush());
    EXPECT_EQ(FileBytes(path), "old+new");
    CLogFile taker(std::move(log));
    EXPECT_TRUE(taker.Write("x"));
    taker = CLogFile();
    EXPECT_FALSE(taker.IsOpen() || taker.Write("y"));
    EXPECT_EQ(ProblemOf(log.Open(path, true)), FileProblem::None) << "the claim ended with its owner";
    ASSERT_TRUE(log.Open(path, false)) << "opening anew gives up the old claim";
    EXPECT_EQ(FileBytes(path), "");
}

TEST(HeldFiles, OnlyAFileCanBeALog)
{
    const CTemporaryFolder folder;
    CLogFile log;
    EXPECT_EQ(ProblemOf(log.Open(folder.Path(), true)), FileProblem::IsAFolder);
    EXPECT_EQ(ProblemOf(log.Open(folder / "missing/log", true)), FileProblem::Missing);
    EXPECT_EQ(ProblemOf(log.Open(kNoFile, true)), FileProblem::NotARegularFile);
    EXPECT_FALSE(log.IsOpen());
    EXPECT_FALSE(log.SeekEnd() || log.Flush());
}
