#include "common/NumberedLog.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

std::optional<platform::LocalTime> March5()
{
    return platform::LocalTime{.day = 5, .month = 3, .year = 2025, .hour = 9, .minute = 7, .second = 2};
}

const HostFacts kHost = {.applicationName = "Acrobat",
                         .language = "ENU",
                         .majorVersion = 21,
                         .minorVersion = 7,
                         .buildDate = "Jan 23 2025"};

constexpr char kStart[] = "1: LOG STARTED: 5/3/2025 , TIME: 9:7:2\r\n";

}  // namespace

TEST(NumberedLog, ARunIsWrittenLineByLine)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "log.txt";
    CNumberedLog log(March5);
    log.SetHostFacts(kHost);
    ASSERT_TRUE(log.Open(path, true));
    EXPECT_TRUE(log.Line("plain"));
    EXPECT_TRUE(log.NameValue("Sequence file", "/s/a.sequ", 1));
    EXPECT_TRUE(log.NameValue("No subfolders", "", 0));
    EXPECT_TRUE(log.NameNumber("Number", -12, 2));
    EXPECT_TRUE(log.Line("two\r\nlines"));
    EXPECT_TRUE(log.Separator());
    log.Close("/P/FERRULE.API");
    EXPECT_EQ(FileBytes(path),
              "1: LOG STARTED: 5/3/2025 , TIME: 9:7:2\r\n"
              "2: plain\r\n"
              "3: \tSequence file : /s/a.sequ\r\n"
              "4: No subfolders : \r\n"
              "5: \t\tNumber : -12\r\n"
              "6: two  lines\r\n"
              "7: ----------------------------------------------------------------------------\r\n"
              "8: LOG STOPPED: 5/3/2025 , TIME: 9:7:2\r\n"
              "9: Plugin : /P/FERRULE.API\r\n"
              "10: Acrobat viewer host application : Acrobat\r\n"
              "11: Language : ENU\r\n"
              "12: Software build date: Jan 23 2025, Adobe Acrobat version: 21.7 \r\n");
}

TEST(NumberedLog, ClosingTellsDetailsOnlyWhenTheHeaderSwitchIsOne)
{
    const struct {
        int headerSwitch;
        std::optional<std::string> pluginName;
        const char* end;
    } rows[] = {{0, "P", ""},
                {2, "P", ""},
                {1, std::nullopt,
                 "3: Acrobat viewer host application : Acrobat\r\n4: Language : ENU\r\n"
                 "5: Software build date: Jan 23 2025, Adobe Acrobat version: 21.7 \r\n"}};
    for (const auto& row : rows) {
        const CTemporaryFolder folder;
        CNumberedLog log(March5);
        log.SetHostFacts(kHost);
        log.SetHeaderSwitch(row.headerSwitch);
        ASSERT_TRUE(log.Open(folder / "log.txt", true));
        log.Close(row.pluginName);
        EXPECT_EQ(FileBytes(folder / "log.txt"),
                  std::string(kStart) + "2: LOG STOPPED: 5/3/2025 , TIME: 9:7:2\r\n" + row.end);
    }
}

TEST(NumberedLog, AppendingContinuesTheFileAndOverwritingDoesNot)
{
    const struct {
        bool append;
        const char* before;
    } rows[] = {{true, "old\r\n"}, {false, ""}};
    for (const auto& row : rows) {
        const CTemporaryFolder folder;
        const std::string path = folder.Write("log.txt", "old\r\n");
        CNumberedLog log(March5);
        ASSERT_TRUE(log.Open(path, row.append));
        EXPECT_EQ(FileBytes(path), row.before + std::string(kStart)) << "the start line is flushed";
    }
}

TEST(NumberedLog, AnUnavailableClockLeavesPlaceholders)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("log", std::string(2'000'001, 'x'));
    CNumberedLog log([] { return std::optional<platform::LocalTime>(); });
    ASSERT_TRUE(log.Open(path, true));
    EXPECT_EQ(FileBytes(path), "1: LOG STARTED: 0/0/0 , TIME: -1:-1:-1\r\n");
    EXPECT_TRUE(std::filesystem::exists(path + "-0-0-0--1--1--1.log"));
}

TEST(NumberedLog, OnlyALogAboveTwoMillionBytesIsArchived)
{
    const struct {
        const char* name;
        std::size_t size;
        bool append;
        const char* archive;
    } rows[] = {{"FerruleLog.txt", 2'000'000, true, nullptr},
                {"FerruleLog.txt", 2'000'001, true, "FerruleLog-5-3-2025-9-7-2.log"},
                {"FerruleLog.txt", 2'000'001, false, nullptr},
                {"a.b.txt", 2'000'001, true, "a.b-5-3-2025-9-7-2.log"},
                {"no extension", 2'000'001, true, "no extension-5-3-2025-9-7-2.log"}};
    for (const auto& row : rows) {
        const CTemporaryFolder folder;
        const std::string old(row.size, 'x');
        const std::string path = folder.Write(row.name, old);
        CNumberedLog log(March5);
        ASSERT_TRUE(log.Open(path, row.append)) << row.name;
        const std::size_t kept = row.append && row.archive == nullptr ? row.size : 0;
        EXPECT_EQ(FileBytes(path).size(), kept + sizeof kStart - 1) << row.name;
        EXPECT_EQ(folder.EntryCount(), row.archive != nullptr ? 2u : 1u) << row.name;
        if (row.archive != nullptr) {
            EXPECT_EQ(FileBytes(folder / row.archive), old);
        }
    }
}

TEST(NumberedLog, AnArchiveThatIsInTheWayKeepsTheLogClosed)
{
    const CTemporaryFolder folder;
    const std::string big(2'000'001, 'x');
    const std::string path = folder.Write("log.txt", big);
    folder.Write("log-5-3-2025-9-7-2.log", "an older archive");
    CNumberedLog log(March5);
    EXPECT_FALSE(log.Open(path, true));
    EXPECT_FALSE(log.Line("dropped"));
    EXPECT_EQ(FileBytes(path), big);
    EXPECT_EQ(FileBytes(folder / "log-5-3-2025-9-7-2.log"), "an older archive");
}

TEST(NumberedLog, ASecondLogOnTheSameFileStaysClosed)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "log.txt";
    CNumberedLog first(March5);
    ASSERT_TRUE(first.Open(path, true));
    first.Line(std::string(2'000'001, 'x'));  // large enough to be archived under the first one's hands
    CNumberedLog second(March5);
    EXPECT_FALSE(second.Open(path, true));
    EXPECT_FALSE(second.Open(path, false));
    EXPECT_FALSE(second.Line("dropped"));
    EXPECT_FALSE(second.NameValue("dropped", "", 0));
    second.Close("P");
    EXPECT_TRUE(first.Line("still there"));
    EXPECT_EQ(folder.EntryCount(), 1u);
    EXPECT_EQ(FileBytes(path).substr(FileBytes(path).size() - 16), "3: still there\r\n");
}

TEST(NumberedLog, AClosedLogDropsEverything)
{
    const CTemporaryFolder folder;
    CNumberedLog log(March5);
    EXPECT_FALSE(log.Open(folder / "missing folder/log.txt", true));
    EXPECT_FALSE(log.IsOpen());
    EXPECT_FALSE(log.Line("x"));
    EXPECT_FALSE(log.NameTime("x", 0));
    EXPECT_FALSE(log.Clear());
    EXPECT_FALSE(log.Flush());
    EXPECT_FALSE(log.SeekBegin());
    EXPECT_FALSE(log.ReadText(10));
    EXPECT_FALSE(log.MemoryUsage(0, true));
}

TEST(NumberedLog, ClearingStartsAgainAtLineOne)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("log.txt", "old\r\n");
    CNumberedLog log(March5);
    ASSERT_TRUE(log.Open(path, true));
    log.Line("gone");
    ASSERT_TRUE(log.Clear());
    EXPECT_EQ(FileBytes(path), kStart);
    log.Line("next");
    EXPECT_EQ(FileBytes(path), std::string(kStart) + "2: next\r\n");
}

TEST(NumberedLog, ReadingGoesOnFromTheCurrentPosition)
{
    const CTemporaryFolder folder;
    CNumberedLog log(March5);
    ASSERT_TRUE(log.Open(folder / "log.txt", true));
    EXPECT_FALSE(log.ReadText(100)) << "nothing follows the last entry";
    ASSERT_TRUE(log.SeekBegin());
    EXPECT_EQ(log.ReadText(6), "1: LOG");
    EXPECT_EQ(log.ReadText(1000), std::string(kStart).substr(6));
    ASSERT_TRUE(log.SeekBegin());
    ASSERT_TRUE(log.SeekEnd());
    log.Line("last");
    EXPECT_EQ(FileBytes(folder / "log.txt"), std::string(kStart) + "2: last\r\n");
}

TEST(NumberedLog, OpeningAgainClosesTheFormerLogWithoutPluginName)
{
    const CTemporaryFolder folder;
    CNumberedLog log(March5);
    log.SetHeaderSwitch(0);
    ASSERT_TRUE(log.Open(folder / "a.txt", true));
    ASSERT_TRUE(log.Open(folder / "b.txt", true));
    EXPECT_EQ(FileBytes(folder / "a.txt"), std::string(kStart) + "2: LOG STOPPED: 5/3/2025 , TIME: 9:7:2\r\n");
    EXPECT_EQ(FileBytes(folder / "b.txt"), "3: LOG STARTED: 5/3/2025 , TIME: 9:7:2\r\n");
}

TEST(NumberedLog, MemoryBlockNamesEveryFigureOneLevelDeeper)
{
    const CTemporaryFolder folder;
    CNumberedLog log(March5);
    ASSERT_TRUE(log.Open(folder / "log.txt", true));
    EXPECT_FALSE(log.MemoryUsage(1, false));
    EXPECT_EQ(FileBytes(folder / "log.txt"), kStart) << "nothing is written without the flag";
    EXPECT_FALSE(log.MemoryUsage(1, true));
    const std::string text = FileBytes(folder / "log.txt");
    EXPECT_NE(text.find("2: \tGlobal memory usage : \r\n"), std::string::npos);
    const char* names[] = {"Total physical memory (MB) ",     "Total virtual memory (MB) ",
                           "Total page file (MB) ",           "Memory load (percents) ",
                           "Available physical memory (MB) ", "Available virtual memory (MB) ",
                           "Available page file memory (MB) "};
    int number = 3;
    for (const char* name : names) {
        const std::string entry = std::to_string(number++) + ": \t\t" + name + " : ";
        EXPECT_NE(text.find(entry), std::string::npos) << entry;
    }
}

TEST(NumberedLog, WithoutAFrameTheFileHoldsTheGivenLinesOnly)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("log.txt", "5: older\r\n");
    {
        CNumberedLog log(March5);
        log.SetHostFacts(kHost);
        ASSERT_TRUE(log.Open(path, true, LogFrame::None));
        EXPECT_TRUE(log.Line("LOG STARTED: by another"));
        EXPECT_TRUE(log.Line("\tindented : kept"));
    }
    EXPECT_EQ(FileBytes(path), "5: older\r\n1: LOG STARTED: by another\r\n2: \tindented : kept\r\n");
    CNumberedLog log(March5);
    ASSERT_TRUE(log.Open(path, false, LogFrame::None));
    EXPECT_TRUE(log.Clear());
    log.Close("P");
    EXPECT_EQ(FileBytes(path), "");
    ASSERT_TRUE(log.Open(path, false));
    EXPECT_EQ(FileBytes(path), kStart);
}
