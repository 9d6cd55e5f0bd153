#include "supervisor/WorkerLog.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

using Lines = std::vector<std::string>;

TEST(WorkerLog, CutsAtTheMarksAndNeverInsideALine)
{
    const CTemporaryFolder folder;
    std::ofstream file(folder / "log", std::ios::binary);
    CWorkerLog log(folder / "log");
    file << "1: settings\r\n" << std::flush;
    log.Note(LogPlace::InputsCounted);
    file << "1: a\r\n2: b: c\r\n3: half" << std::flush;
    log.Read();
    log.MarkEnd();
    file << " a line\r\n" << std::flush;
    log.Read();
    EXPECT_EQ(log.Take().lines, (Lines{"a", "b: c"}));
    file << "4: d\r\n" << std::flush;
    log.Note(LogPlace::SequencePreflightBegins);
    file << "5: e\r\n6: \r\n" << std::flush;
    log.Note(LogPlace::SequencePreflightEnds);
    file << "7: \xFF bytes\r\n" << std::flush;
    log.Read();
    const LogBlock block = log.Take();
    EXPECT_EQ(block.lines, (Lines{"half a line", "d", "e", "", "\xFF bytes"}));
    EXPECT_EQ(block.preflightBegin, 2u);
    EXPECT_EQ(block.preflightEnd, 4u);
    EXPECT_TRUE(log.Take().lines.empty());
    EXPECT_EQ(log.TakePreamble(), Lines{"settings"});
}

}  // namespace
