#include <climits>
#include <regex>

#include <gtest/gtest.h>

#include "common/Log.h"
#include "support/MemoryLog.h"
#include "support/TemporaryFolder.h"

namespace {

std::optional<platform::LocalTime> March5()
{
    return platform::LocalTime{.day = 5, .month = 3, .year = 2025, .hour = 9, .minute = 7, .second = 2};
}

constexpr char kStart[] = "1: LOG STARTED: 5/3/2025 , TIME: 9:7:2\r\n";

class NumberedLog : public testing::Test {
protected:
    CTemporaryFolder m_folder;
    std::string m_path = m_folder / "log.txt";
    CNumberedLog m_log{March5};
};

}  // namespace

TEST(Log, EntriesHaveTheirFixedFormAndCannotForgeALine)
{
    CMemoryLog log;
    log.NameValue("Sequence file", "", 0);
    log.NameValue("Destination", "/a b", 1);
    log.NameNumber("Error code", LLONG_MIN, 2);
    log.NameNumber("Total", 5, -1);
    log.NameValue("a\nb", std::string("x\r\n7: File is deleted : y\0z", 27), 0);
    EXPECT_EQ(log.lines, (std::vector<std::string>{"Sequence file : ", "\tDestination : /a b",
                                                   "\t\tError code : -9223372036854775808", "Total : 5",
                                                   "a b : x  7: File is deleted : y z"}));
    log.NameTime("Started", 1);
    EXPECT_TRUE(
        std::regex_match(log.lines.back(), std::regex("\tStarted : \\d\\d/\\d\\d/\\d{4} , \\d\\d:\\d\\d:\\d\\d")))
        << log.lines.back();
}

TEST_F(NumberedLog, IsReadAndClearedAndTakesTheMachinesMemory)
{
    ASSERT_TRUE(m_log.Open(m_path, false));
    EXPECT_FALSE(m_log.MemoryUsage(1, true));
    m_log.Separator();
    ASSERT_TRUE(m_log.SeekBegin());
    const std::string text = std::regex_replace(m_log.ReadText(100'000).value_or(""), std::regex(" : \\d+"), " : #");
    EXPECT_EQ(text.substr(sizeof kStart - 1),
              "2: \tGlobal memory usage : \r\n"
              "3: \t\tTotal physical memory (MB)  : #\r\n4: \t\tTotal virtual memory (MB)  : #\r\n"
              "5: \t\tTotal page file (MB)  : #\r\n6: \t\tMemory load (percents)  : #\r\n"
              "7: \t\tAvailable physical memory (MB)  : #\r\n8: \t\tAvailable virtual memory (MB)  : #\r\n"
              "9: \t\tAvailable page file memory (MB)  : #\r\n10: " +
                  std::string(76, '-') + "\r\n");
    EXPECT_EQ(m_log.ReadText(1), std::nullopt);
    ASSERT_TRUE(m_log.Clear());
    EXPECT_EQ(FileBytes(m_path), std::string(kStart));
}

TEST_F(NumberedLog, ARunIsWrittenLineByLineBehindWhatIsThere)
{
    m_folder.Write("log.txt", "old\r\n");
    m_log.SetHostFacts({.applicationName = "Acrobat",
                        .language = "ENU",
                        .majorVersion = 21,
                        .minorVersion = 7,
                        .buildDate = "Jan 23 2025"});
    ASSERT_TRUE(m_log.Open(m_path, true));
    EXPECT_EQ(FileBytes(m_path), "old\r\n" + std::string(kStart)) << "the start line is flushed";
    EXPECT_TRUE(m_log.NameValue("Sequence file", "/s/a.sequ", 1));
    EXPECT_TRUE(m_log.Line("two\r\nlines"));
    m_log.Close("/P/FERRULE.API");
    const std::string details =
        "Acrobat viewer host application : Acrobat\r\n%: Language : ENU\r\n"
        "%: Software build date: Jan 23 2025, Adobe Acrobat version: 21.7 \r\n";
    const auto numbered = [](std::string text, int first) {
        for (std::size_t at; (at = text.find('%')) != std::string::npos;)
            text.replace(at, 1, std::to_string(first++));
        return text;
    };
    EXPECT_EQ(FileBytes(m_path),
              "old\r\n" + std::string(kStart) +
                  numbered("%: \tSequence file : /s/a.sequ\r\n%: two  lines\r\n"
                           "%: LOG STOPPED: 5/3/2025 , TIME: 9:7:2\r\n%: Plugin : /P/FERRULE.API\r\n%: " +
                               details,
                           2));
    ASSERT_TRUE(m_log.Open(m_path, false));
    ASSERT_TRUE(m_log.Open(m_folder / "another", true)) << "the former one is closed, without the name of a plug-in";
    EXPECT_EQ(FileBytes(m_path), numbered("%: LOG STARTED: 5/3/2025 , TIME: 9:7:2\r\n"
                                          "%: LOG STOPPED: 5/3/2025 , TIME: 9:7:2\r\n%: " +
                                              details,
                                          9));
    EXPECT_TRUE(FileBytes(m_folder / "another").starts_with("14: LOG STARTED: ")) << "numbers go on";
}

TEST_F(NumberedLog, OnlyALogAboveTwoMillionBytesIsArchived)
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
        EXPECT_TRUE(row.archive == nullptr || FileBytes(folder / row.archive) == old) << row.name;
    }
    m_folder.Write("log.txt", std::string(2'000'001, 'x'));
    CNumberedLog timeless([] { return std::optional<platform::LocalTime>(); });
    ASSERT_TRUE(timeless.Open(m_path, true));
    EXPECT_EQ(FileBytes(m_path), "1: LOG STARTED: 0/0/0 , TIME: -1:-1:-1\r\n");
    EXPECT_EQ(FileBytes(m_folder / "log-0-0-0--1--1--1.log").size(), 2'000'001u);
}

TEST_F(NumberedLog, WhatCannotBeOpenedStaysAsItIsAndEntriesAreDropped)
{
    const std::string big(2'000'001, 'x');
    m_folder.Write("log.txt", big);
    const auto archive = m_folder.Write("log-5-3-2025-9-7-2.log", "an older archive, in the way");
    for (const std::string& path : {m_path, m_folder / "missing folder/log.txt"}) {
        EXPECT_FALSE(m_log.Open(path, true));
        EXPECT_FALSE(m_log.IsOpen());
        EXPECT_FALSE(m_log.Line("dropped"));
        EXPECT_FALSE(m_log.NameTime("dropped", 0));
    }
    EXPECT_EQ(FileBytes(m_path), big);
    EXPECT_EQ(FileBytes(archive), "an older archive, in the way");
}

TEST_F(NumberedLog, ASecondLogOnTheSameFileStaysClosed)
{
    ASSERT_TRUE(m_log.Open(m_path, true));
    m_log.Line(std::string(2'000'001, 'x'));  // large enough to be archived under its hands
    CNumberedLog second(March5);
    EXPECT_FALSE(second.Open(m_path, true));
    EXPECT_FALSE(second.Open(m_path, false));
    EXPECT_FALSE(second.Line("dropped"));
    second.Close("P");
    EXPECT_TRUE(m_log.Line("still there"));
    EXPECT_EQ(m_folder.EntryCount(), 1u);
    EXPECT_TRUE(FileBytes(m_path).ends_with("x\r\n3: still there\r\n"));
}

TEST_F(NumberedLog, WithoutAFrameTheFileHoldsTheGivenLinesOnly)
{
    m_folder.Write("log.txt", "5: older\r\n");
    ASSERT_TRUE(m_log.Open(m_path, true, LogFrame::None));
    EXPECT_TRUE(m_log.Line("LOG STARTED: by another"));
    EXPECT_TRUE(m_log.Line("\tindented : kept"));
    m_log.Close("P");
    EXPECT_EQ(FileBytes(m_path), "5: older\r\n1: LOG STARTED: by another\r\n2: \tindented : kept\r\n");
}
