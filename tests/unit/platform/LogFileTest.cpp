#include "platform/LogFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

#include "support/TemporaryFolder.h"

using platform::CLogFile;

TEST(LogFile, ASecondWriterIsRefusedAndDoesNoHarm)
{
    const CTemporaryFolder folder;
    const auto path = folder / "log";
    CLogFile first, second;
    ASSERT_TRUE(first.Open(path, true));
    ASSERT_TRUE(first.Write("one\n"));
    EXPECT_EQ(second.Open(path, false).errorNumber, EWOULDBLOCK);
    EXPECT_FALSE(second.IsOpen());
    EXPECT_EQ(FileBytes(path), "one\n") << "readers are welcome, and the refused writer must not empty the file";
    first.Close();
    EXPECT_TRUE(second.Open(path, true));
    EXPECT_EQ(FileBytes(path), "one\n");
}

TEST(LogFile, ReadsAndWritesAtItsOnePosition)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("log", "old");
    CLogFile log;
    ASSERT_TRUE(log.Open(path, true));
    EXPECT_TRUE(log.SeekEnd());
    EXPECT_TRUE(log.Write("+new"));
    EXPECT_EQ(log.Read(100), "");
    EXPECT_TRUE(log.SeekBegin());
    EXPECT_EQ(log.Read(4), "old+");
    EXPECT_EQ(log.Read(100), "new");
    EXPECT_TRUE(log.Truncate() && log.SeekBegin());
    EXPECT_TRUE(log.Write("again"));
    EXPECT_TRUE(log.Flush());
    EXPECT_EQ(FileBytes(path), "again");
    ASSERT_TRUE(log.Open(path, false)) << "opening anew gives up the old claim";
    EXPECT_EQ(FileBytes(path), "");
}

TEST(LogFile, MovingHandsTheFileOn)
{
    const CTemporaryFolder folder;
    CLogFile log;
    ASSERT_TRUE(log.Open(folder / "log", false));
    CLogFile taker(std::move(log));
    EXPECT_TRUE(taker.Write("x"));
    taker = CLogFile();
    EXPECT_FALSE(taker.IsOpen());
    EXPECT_EQ(taker.Write("y").errorNumber, EBADF);
    EXPECT_TRUE(CLogFile().Open(folder / "log", true)) << "the claim ended with its owner";
}

TEST(LogFile, OnlyAFileCanBeALog)
{
    const CTemporaryFolder folder;
    CLogFile log;
    EXPECT_EQ(log.Open(folder.Path(), true).errorNumber, EISDIR);
    EXPECT_EQ(log.Open(folder / "missing/log", true).errorNumber, ENOENT);
    EXPECT_EQ(log.Open("/dev/null", true).errorNumber, EINVAL);
    EXPECT_FALSE(log.IsOpen());
    EXPECT_EQ(log.Read(10), "");
    EXPECT_FALSE(log.SeekBegin() || log.SeekEnd() || log.Truncate() || log.Flush());
}
