// Pieces of the supervisor by themselves: the queue, what workers log, how they end.
#include <chrono>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>

#include "supervisor/results/OutcomeRecorder.h"
#include "supervisor/workers/FilesForWorkers.h"
#include "supervisor/workers/Worker.h"
#include "unit/supervisor/RunPlace.h"

namespace {

using Lines = std::vector<std::string>;

/// Files 1, 2, ... with these groups.
CGroupedFiles::Source FilesOf(std::vector<std::uint32_t> groups)
{
    return [groups, next = std::size_t{0}]() mutable -> std::optional<PlannedFile> {
        if (next == groups.size()) return std::nullopt;
        ++next;
        return PlannedFile{.number = static_cast<int>(next), .group = groups[next - 1]};
    };
}

int Take(CGroupedFiles& files)
{
    const auto file = files.Take();
    return file ? file->number : 0;
}

TEST(GroupedFiles, HandsOutAGroupInOrderAndOneFileAtATime)
{
    CGroupedFiles files(FilesOf({7, 7, 0, 7, 8, 7}));
    EXPECT_EQ(Take(files), 1);
    EXPECT_EQ(Take(files), 3) << "2 waits for 1";
    EXPECT_EQ(Take(files), 5) << "4 waits, too";
    EXPECT_EQ(Take(files), 0);
    EXPECT_FALSE(files.Empty());
    files.Done(8);
    EXPECT_EQ(Take(files), 0);
    files.Done(7);
    EXPECT_EQ(Take(files), 2);
    EXPECT_EQ(Take(files), 0);
    files.Done(7);
    EXPECT_EQ(Take(files), 4);
    files.Done(7);
    EXPECT_EQ(Take(files), 6);
    EXPECT_TRUE(files.Empty());
}

TEST(GroupedFiles, HoldsBackNoMoreThanItsLookahead)
{
    int read = 0;
    CGroupedFiles files([&]() -> std::optional<PlannedFile> { return PlannedFile{.number = ++read, .group = 1}; },
                        10);
    EXPECT_EQ(Take(files), 1);
    for (int attempt = 0; attempt < 5; ++attempt) EXPECT_EQ(Take(files), 0);
    EXPECT_EQ(read, 11);
    files.Done(1);
    EXPECT_EQ(Take(files), 2);
}

TEST(ClosingLines, OfSeveralWorkersAreThoseOfOneRun)
{
    const Lines full = {"own", "closed", "LOG STOPPED: 1", "date"},
                later = {"own", "closed", "LOG STOPPED: 2", "date"}, bare = {"closed", "LOG STOPPED: 3", "date"},
                other = {"failed", "closed", "LOG STOPPED: 4", "date"};
    const struct {
        const char* what;
        std::vector<Lines> added;
        Lines joined;
    } rows[] = {
        {"none", {}, {}},
        {"a worker without a log", {{}, full}, full},
        {"alike but for the time", {full, later}, later},
        {"a worker that opened no file, last", {full, bare}, {"own", "closed", "LOG STOPPED: 3", "date"}},
        {"a worker that opened no file, first", {bare, full}, full},
        {"each with something of its own",
         {full, other, later},
         {"failed", "own", "closed", "LOG STOPPED: 2", "date"}},
        {"nothing in common", {{"a", "b"}, {"c"}}, {"a", "b", "c"}},
    };
    for (const auto& row : rows) {
        CClosingLines epilogues;
        for (const Lines& lines : row.added) epilogues.Add(lines);
        EXPECT_EQ(epilogues.Joined(), row.joined) << row.what;
    }
}

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

TEST(WorkerEnding, IsToldAsTheSystemKnowsIt)
{
    const struct {
        platform::ChildEnding ending;
        const char* text;
    } rows[] = {
        {{.exitCode = 3}, "ended with exit code 3"},      {{.exitCode = -1}, "ended with exit code -1"},
        {{.signal = 11}, "crashed (signal 11)"},          {{.signal = 0xC0000005}, "crashed (0xC0000005)"},
        {{.signal = 0xE06D7363}, "crashed (0xE06D7363)"},
    };
    for (const auto& row : rows) EXPECT_EQ(EndingText(row.ending), row.text);
}

TEST(WorkerEnding, LeavesTheProgramsThatTheWorkerHasOpened)
{
    CRunPlace place;
    place.Input("open");
    EXPECT_EQ(place.Run().exit, ExitClass::Fine);
    const std::string opened = place.folder / "out/opened";
    for (int i = 0; i < 3000 && !platform::FileExists(opened); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(platform::FileExists(opened));
}

}  // namespace
