#include "base/PathNames.h"
#include "platform/HeldFiles.h"

#include <gtest/gtest.h>

#include <utility>

#include "platform/FileProblem.h"
#include "support/TemporaryFolder.h"

using platform::CLogFile;
using platform::FileProblem;
using platform::ProblemOf;

namespace {

const char* const kDevice = kSeparator == '/' ? "/dev/null" : "NUL";

}  // namespace

TEST(LogFile, ASecondWriterIsRefusedAndDoesNoHarm)
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

TEST(LogFile, WritesWhereItStands)
{
    const CTemporaryFolder folder;
    const auto path = folder.Write("log", "old");
    CLogFile log;
    ASSERT_TRUE(log.Open(path, true));
    EXPECT_TRUE(log.SeekEnd());
    EXPECT_TRUE(log.Write("+new"));
    EXPECT_TRUE(log.Flush());
    EXPECT_EQ(FileBytes(path), "old+new");
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
    EXPECT_FALSE(taker.Write("y"));
    EXPECT_TRUE(CLogFile().Open(folder / "log", true)) << "the claim ended with its owner";
}

TEST(LogFile, OnlyAFileCanBeALog)
{
    const CTemporaryFolder folder;
    CLogFile log;
    EXPECT_EQ(ProblemOf(log.Open(folder.Path(), true)), FileProblem::IsAFolder);
    EXPECT_EQ(ProblemOf(log.Open(folder / "missing/log", true)), FileProblem::Missing);
    EXPECT_EQ(ProblemOf(log.Open(kDevice, true)), FileProblem::NotARegularFile);
    EXPECT_FALSE(log.IsOpen());
    EXPECT_FALSE(log.SeekEnd() || log.Flush());
}
