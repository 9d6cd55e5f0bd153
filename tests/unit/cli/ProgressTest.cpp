#include <gtest/gtest.h>

#include <sstream>

#include "cli/Console.h"
#include "cli/ProgressMeter.h"

namespace {

using cli::CProgressMeter;

CProgressMeter Meter(std::uint64_t files, std::uint64_t bytes, const cli::WorkDone& before = {})
{
    CProgressMeter meter;
    meter.Begin(files, bytes, before, 1000);
    return meter;
}

/// A screen with a clock that the test turns.
struct FakeScreen {
    std::ostringstream data, messages;
    std::uint64_t now = 0;
    cli::Screen screen;

    explicit FakeScreen(bool terminal)
        : screen{&data, &messages, terminal, false, [] { return std::size_t{60}; }, [this] { return now; }}
    {
    }
    std::string TakeMessages()
    {
        std::string text = messages.str();
        messages.str("");
        return text;
    }
};

}  // namespace

TEST(ProgressMeter, LargeFilesCountForMoreThanSmallOnes)
{
    CProgressMeter meter = Meter(10, 100'000'000);
    meter.Update({.files = 9, .bytes = 1'000'000, .notFine = 0});
    EXPECT_EQ(meter.Sentence(1000), "9 of 10 files (2 %)");
    meter = Meter(10, 0);
    meter.Update({.files = 5, .bytes = 0, .notFine = 0});
    EXPECT_EQ(meter.Sentence(1000), "5 of 10 files (50 %)");
}

TEST(ProgressMeter, SpeedAndTimeLeftComeFromThisStartOnly)
{
    CProgressMeter meter = Meter(10'000, 0, {.files = 4000, .bytes = 0, .notFine = 2});
    EXPECT_EQ(meter.Sentence(61'000), "4,000 of 10,000 files (40 %), 2 not fine");
    meter.Update({.files = 4600, .bytes = 0, .notFine = 3});
    EXPECT_EQ(meter.Sentence(61'000), "4,600 of 10,000 files (46 %), 3 not fine, 10 files/s, 9:00 left");
}

TEST(ProgressMeter, SaysHundredPercentOnlyAtTheEnd)
{
    CProgressMeter meter = Meter(100'000, 0);
    meter.Update({.files = 99'999, .bytes = 0, .notFine = 0});
    EXPECT_NE(meter.Sentence(1000).find("(99 %)"), std::string::npos);
    meter.Update({.files = 100'000, .bytes = 0, .notFine = 0});
    EXPECT_EQ(meter.Sentence(1000), "100,000 of 100,000 files (100 %)");
    EXPECT_EQ(Meter(0, 0).Sentence(1000), "0 of 0 files (100 %)");
}

TEST(ProgressMeter, TheBarNeverExceedsTheWidthAndDropsTheLeastImportantFirst)
{
    CProgressMeter meter = Meter(10'000, 0);
    meter.Update({.files = 4200, .bytes = 0, .notFine = 3});
    for (std::size_t width = 0; width < 130; ++width)
        EXPECT_LE(meter.Bar(43'000, width, false).size(), width) << width;
    EXPECT_EQ(meter.Bar(43'000, 90, false),
              "[=============>                  ]  42 %  4,200/10,000 files  3 not fine  0:58 left  100/s");
    EXPECT_EQ(meter.Bar(43'000, 40, false), " 42 %  4,200/10,000 files  3 not fine");
    EXPECT_EQ(meter.Bar(43'000, 40, true), " 42 %  4,200/10,000 files  \x1b[31m3 not fine\x1b[0m");
    EXPECT_EQ(meter.Bar(43'000, 8, false), " 42 %");
}

TEST(ProgressMeter, NumbersAreGroupedAndDurationsHaveHours)
{
    EXPECT_EQ(cli::Grouped(999), "999");
    EXPECT_EQ(cli::Grouped(1000), "1,000");
    EXPECT_EQ(cli::Grouped(1234567), "1,234,567");
    EXPECT_EQ(cli::Duration(7), "0:07");
    EXPECT_EQ(cli::Duration(3723), "1:02:03");
}

TEST(StatusLine, OnATerminalOneLineIsDrawnAnewTenTimesASecond)
{
    FakeScreen fake(true);
    cli::CStatusLine line(fake.screen);
    int drawn = 0;
    const auto show = [&] {
        line.Show([&](std::size_t width) { return std::to_string(width) + "#" + std::to_string(++drawn); },
                  [] { return "sentence"; });
    };
    for (fake.now = 0; fake.now < 1000; fake.now += 10) show();
    EXPECT_EQ(drawn, 10);
    EXPECT_EQ(fake.TakeMessages().substr(0, 16), "\r\x1b[K59#1\r\x1b[K59#2");
    line.Message("hello");
    EXPECT_EQ(fake.TakeMessages(), "\r\x1b[Khello\n");
    line.Message("again");
    EXPECT_EQ(fake.TakeMessages(), "again\n");
}

TEST(StatusLine, WithoutATerminalAPlainLineComesEveryFewSeconds)
{
    FakeScreen fake(false);
    cli::CStatusLine line(fake.screen);
    const auto show = [&] { line.Show([](std::size_t) { return "bar"; }, [&] { return std::to_string(fake.now); }); };
    for (fake.now = 0; fake.now <= 11'000; fake.now += 100) show();
    line.Clear();
    EXPECT_EQ(fake.TakeMessages(), "ferrule: 5000\nferrule: 10000\n");
}
