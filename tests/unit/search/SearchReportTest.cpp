#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/resource.h>

#include <csignal>
#endif

#include "search/SearchReport.h"
#include "support/TemporaryFolder.h"

namespace {

const std::string kTextHead =
    "\xEF\xBB\xBF"
    "Ferrule Text Search Report\r\nProcessing date and time: Sunday, March 01, 2026 09:05:07\r\n"
    "Software build date: Jan  1 2026, Adobe Acrobat version: 11.2 \r\n";
const std::string kCsvHead =
    "\xEF\xBB\xBF"
    "File,Page,Text\r\n";

class SearchReport : public testing::Test {
protected:
    CSearchReport NewRun() const
    {
        return CSearchReport({.applicationName = "",
                              .language = "",
                              .majorVersion = 11,
                              .minorVersion = 2,
                              .buildDate = "Jan  1 2026"},
                             [] {
                                 return std::optional(platform::LocalTime{1, 3, 2026, 9, 5, 7});
                             });
    }
    const ReportEntry m_entry =
        MakeReportEntry("/in/a,b.pdf", {{"x+", {{0, "x\ny"}, {11, "say \"x\""}}}, {"none", {}}});
    const std::string m_text =
        "Search text: x+, Number of matches: 2\r\n\tFile: /in/a,b.pdf, Page: 1, Text found: x y\r\n"
        "\tFile: /in/a,b.pdf, Page: 12, Text found: say \"x\"\r\nSearch text: none, Number of matches: 0\r\n";
    const std::string m_csv = "\"/in/a,b.pdf\",1,\"x\ny\"\r\n\"/in/a,b.pdf\",12,\"say \"\"x\"\"\"\r\n";
    CTemporaryFolder m_folder;
    SearchSettings m_settings{.reportFile = m_folder / "r.txt"};
};

}  // namespace

TEST_F(SearchReport, IsAppendedToOrBegunOncePerRun)
{
    for (const bool append : {true, false}) {
        m_settings.appendReport = append;
        m_settings.overwriteReport = !append;
        for (int run = 1; run <= 2; ++run) {
            CSearchReport report = NewRun();
            EXPECT_EQ(report.Add(m_settings, m_entry), "");
            EXPECT_EQ(report.Add(m_settings, m_entry), "");
            std::string text = kTextHead, csv = kCsvHead;
            for (int entry = 0; entry < (append ? 2 * run : 2); ++entry) {
                text += m_text;
                csv += m_csv;
            }
            EXPECT_EQ(FileBytes(m_folder / "r.txt"), text);
            EXPECT_EQ(FileBytes(m_folder / "r.csv"), csv);
        }
    }
}

TEST_F(SearchReport, OfAKilledRunIsWrittenOnce)
{
    const std::int64_t before = 0, after = std::int64_t{1} << 62;
    const ReportEntry other = MakeReportEntry("/in/b.pdf", {{"x", {{0, "x"}}}});
    for (const bool append : {true, false}) {
        m_settings = {.appendReport = append, .reportFile = m_folder / (append ? "append.txt" : "each.txt")};
        CSearchReport killed = NewRun(), resumed = NewRun(), another = NewRun();
        ASSERT_EQ(killed.Add(m_settings, m_entry), "");
        resumed.MayHaveWritten(before);
        EXPECT_EQ(resumed.Add(m_settings, m_entry), "");
        EXPECT_EQ(resumed.Add(m_settings, other), "");
        another.MayHaveWritten(after);  // the report has not changed since
        EXPECT_EQ(another.Add(m_settings, other), "");
        const std::string name = append ? "append" : "each";
        EXPECT_EQ(FileBytes(m_folder / (name + ".csv")), kCsvHead + m_csv + (append ? other.csv + other.csv : ""));
        EXPECT_EQ(FileBytes(m_folder / (name + ".txt")),
                  kTextHead + m_text + (append ? other.text + other.text : ""));
    }
    EXPECT_EQ(FileBytes(m_folder / "each (2).csv"), kCsvHead + other.csv);
}

TEST_F(SearchReport, OfEachDocumentHasANameOfItsOwnOtherwise)
{
    CSearchReport report = NewRun();
    m_folder.Write("r (1).csv", "taken");
    for (int document = 0; document < 3; ++document) EXPECT_EQ(report.Add(m_settings, m_entry), "");
    for (const char* name : {"r", "r (2)", "r (3)"}) {
        EXPECT_EQ(FileBytes(m_folder / (std::string(name) + ".txt")), kTextHead + m_text) << name;
        EXPECT_EQ(FileBytes(m_folder / (std::string(name) + ".csv")), kCsvHead + m_csv) << name;
    }
    EXPECT_EQ(FileBytes(m_folder / "r (1).csv"), "taken");
    m_settings.createReport = false;
    EXPECT_EQ(report.Add(m_settings, m_entry), "");
    EXPECT_EQ(FileBytes(m_folder / "r (4).txt"), "<missing>");
}

TEST_F(SearchReport, TouchesNoOtherFileAndLeavesNothingHalf)
{
    m_settings.overwriteReport = true;
    CSearchReport report = NewRun();
    m_folder.Write("r.csv", "name,street\r\n");
    EXPECT_NE(report.Add(m_settings, m_entry).find("it is no search report"), std::string::npos);
    EXPECT_EQ(FileBytes(m_folder / "r.csv"), "name,street\r\n");
    EXPECT_EQ(FileBytes(m_folder / "r.txt"), "<missing>");
    for (const std::string& path :
         {m_folder / "r.csv", m_folder / "no/folder.txt", m_folder.MakeFolder("folder.txt")}) {
        m_settings.reportFile = path;
        EXPECT_TRUE(report.Add(m_settings, m_entry).starts_with(path)) << path;
    }
#ifndef _WIN32
    // The disk is full when the CSV is written: the text goes again.
    m_settings.reportFile = m_folder / "half.txt";
    ASSERT_EQ(report.Add(m_settings, m_entry), "");
    rlimit former{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &former), 0);
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit little{2000, former.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &little), 0);
    const std::string problem = report.Add(m_settings, {"short", std::string(5000, 'x')});
    ::setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_TRUE(problem.starts_with(m_folder / "half.csv")) << problem;
    EXPECT_EQ(FileBytes(m_folder / "half.txt"), kTextHead + m_text);
    EXPECT_EQ(FileBytes(m_folder / "half.csv"), kCsvHead + m_csv);
#endif
}
