#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "supervisor/Worker.h"
#include "unit/supervisor/RunPlace.h"

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
