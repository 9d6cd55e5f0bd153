#include <gtest/gtest.h>

#include "supervisor/Worker.h"

TEST(WorkerEnding, IsToldAsTheSystemKnowsIt)
{
    const struct {
        platform::ChildEnding ending;
        const char* text;
    } rows[] = {
        {{.exitCode = 3}, "ended with exit code 3"},
        {{.exitCode = -1}, "ended with exit code -1"},
        {{.signal = 11}, "crashed (signal 11)"},
        {{.signal = 0xC0000005}, "crashed (0xC0000005)"},
        {{.signal = 0xE06D7363}, "crashed (0xE06D7363)"},
    };
    for (const auto& row : rows) EXPECT_EQ(EndingText(row.ending), row.text);
}
