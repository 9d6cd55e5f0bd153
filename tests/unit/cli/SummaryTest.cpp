#include "cli/Summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/Printable.h"
#include "cli/RunPrinter.h"

using testing::HasSubstr;
using testing::Not;

namespace {

struct Scene {
    std::ostringstream data, messages;
    cli::Screen screen{
        &data, &messages, false, false, [] { return std::size_t{80}; }, [] { return std::uint64_t{0}; }};
    cli::CRunPrinter printer;
    RunResult result;

    explicit Scene(const cli::PrintOptions& options = {}) : printer(screen, options) {}
    void Done(const std::string& path, FileOutcome outcome, const std::string& message = "")
    {
        FileRecord record;
        record.path = path;
        record.outcome = outcome;
        record.message = message;
        printer.FileDone(record, {});
        ++result.counts[static_cast<std::size_t>(outcome)];
        ++result.plan.total;
    }
    std::string Text(const cli::SummaryFacts& facts = {}) const { return cli::SummaryText(result, printer, facts); }
};

}  // namespace

TEST(Summary, ListsTheFirstTwentyAndSaysWhereTheOthersAre)
{
    Scene run;
    for (int number = 1; number <= 25; ++number)
        run.Done("/in/" + std::to_string(number) + ".pdf", FileOutcome::Failed, "broken");
    run.Done("/in/good.pdf", FileOutcome::Saved);
    run.result.exit = ExitClass::SomeNotSaved;
    const std::string text = run.Text({.dryRun = false, .canResume = true, .kept = "/r.jsonl"});
    EXPECT_THAT(text, HasSubstr("  saved                      1\n  failed                    25\n"));
    EXPECT_THAT(text, HasSubstr("  /in/20.pdf: failed: broken\n  ... and 5 more, all in /r.jsonl\n"));
    EXPECT_THAT(text, Not(HasSubstr("/in/21.pdf")));
    EXPECT_THAT(text, HasSubstr("--resume --retry-failed"));
    EXPECT_THAT(run.Text(), HasSubstr("... and 5 more; --record FILE"));
}

TEST(Summary, HintsFitTheEnd)
{
    const struct {
        ExitClass exit;
        bool dryRun;
        bool canResume;
        const char* hint;
    } rows[] = {{ExitClass::Fine, false, true, ""},
                {ExitClass::Stopped, false, true, "with --resume.\n"},
                {ExitClass::Broken, false, true, "with --resume.\n"},
                {ExitClass::SomeNotSaved, true, true, "nothing was touched.\n"},
                {ExitClass::Stopped, false, false, ""}};
    for (const auto& row : rows) {
        Scene run;
        run.Done("a", FileOutcome::Saved);
        run.result.exit = row.exit;
        const std::string text = run.Text({.dryRun = row.dryRun, .canResume = row.canResume, .kept = ""});
        EXPECT_EQ(text, std::string("  saved                      1\n") +
                            (*row.hint ? text.substr(text.find('\n') + 1) : ""));
        EXPECT_TRUE(text.ends_with(row.hint)) << text;
    }
    Scene notStarted;
    notStarted.result.exit = ExitClass::Broken;
    EXPECT_EQ(notStarted.Text({.dryRun = false, .canResume = true, .kept = ""}), "");
}

TEST(Summary, JsonCountsEveryClassAndSurvivesNamesThatAreNoText)
{
    Scene run;
    run.Done("a", FileOutcome::CopiedUnchanged);
    run.result.exit = ExitClass::SomeNotSaved;
    run.result.recordPath = "/r\xFF";
    run.result.message = "it \"ends\"";
    const auto json = nlohmann::json::parse(cli::SummaryJson(run.result));
    EXPECT_EQ(json["end"], "not-all-fine");
    EXPECT_EQ(json["total"], 1);
    EXPECT_EQ(json["outcomes"]["copied-unchanged"], 1);
    EXPECT_EQ(json["outcomes"].size(), 6U);
    EXPECT_EQ(json["message"], "it \"ends\"");
}

TEST(RunPrinter, DryRunsPrintWhatWouldHappenAsData)
{
    Scene run({.quiet = false, .dryRun = true, .recordToData = false, .jobs = 1, .part = ""});
    FileRecord record;
    record.path = "/in/a\x1b[2J.pdf";
    record.outcome = FileOutcome::Saved;
    record.outputs = {{"/out/a.pdf", ""}};
    record.finalAction = {Act::Move, "/done/a.pdf", FinalActionRecord::State::Done};
    run.printer.FileDone(record, {});
    EXPECT_EQ(run.data.str(), "/in/a\\x1b[2J.pdf\n  -> /out/a.pdf\n  then move /done/a.pdf\n");
}

TEST(RunPrinter, ProgressBeginsWhenTheTotalIsKnown)
{
    Scene run;
    run.screen.terminal = true;
    std::uint64_t now = 0;
    run.screen.milliseconds = [&now] { return now += 1000; };
    PlannedFile file;
    file.number = 1234;
    run.printer.FilePlanned(file);
    run.printer.Tick({});
    PlanSummary plan;
    plan.total = 4;
    plan.bytes = 5'000'000;
    run.printer.Planned(plan);
    run.printer.Tick({.filesDone = 1, .filesTotal = 4, .bytesDone = 0, .bytesTotal = 0, .notSaved = 0});
    EXPECT_EQ(run.messages.str(),
              "\r\x1b[K1,234 files found so far\r\x1b[K4 files, 5.0 MB, 1 worker\n"
              "\r\x1b[K[==========>                             ]  25 %  1/4 files");
}

TEST(RunPrinter, QuietKeepsWarningsAndTheRecord)
{
    Scene run({.quiet = true, .dryRun = false, .recordToData = true, .jobs = 2, .part = ""});
    PlanSummary plan;
    plan.total = 3;
    run.printer.Planned(plan);
    run.printer.Remark("damaged");
    run.printer.Warning("the log is locked");
    run.printer.RecordLine("{}");
    EXPECT_EQ(run.messages.str(), "ferrule: warning: the log is locked\n");
    EXPECT_EQ(run.data.str(), "{}\n");
}

TEST(RunPrinter, QuietTellsEveryFileThatIsNotSavedAndCountsThem)
{
    Scene run({.quiet = true, .jobs = 1});
    run.Done("/in/good.pdf", FileOutcome::Saved);
    run.result.exit = ExitClass::Fine;
    EXPECT_EQ(run.messages.str() + cli::TroubleText(run.result, run.printer, {}), "");
    for (int number = 0; number < 30; ++number) run.Done("/in/bad", FileOutcome::Failed, "torn\nfile");
    run.Done("/in/as-is.pdf", FileOutcome::CopiedUnchanged);
    ++run.result.counts[static_cast<std::size_t>(FileOutcome::Skipped)];  // by an earlier start
    run.result.remaining = 2;
    run.result.exit = ExitClass::SomeNotSaved;
    run.result.logPath = "/log";
    std::string expected;
    for (int number = 0; number < 30; ++number) expected += "ferrule: /in/bad: failed: torn\\nfile\n";
    EXPECT_EQ(run.messages.str(), expected + "ferrule: /in/as-is.pdf: copied unchanged\n");
    EXPECT_EQ(cli::TroubleText(run.result, run.printer, {.canResume = false, .kept = ""}),
              "ferrule: 34 of 35 files were not saved: 1 copied unchanged, 30 failed, 1 skipped, 2 not begun, 1 of "
              "them in an earlier start of this run\nLog: /log\n");
}

TEST(Printable, ControlCharactersAreSpelledOutAndTextStays)
{
    EXPECT_EQ(cli::Printable("a\nb\t\x1b[31m\x7f"), "a\\nb\\t\\x1b[31m\\x7f");
    EXPECT_EQ(cli::PrintableLines("a\n\tb\n"), "a\n\\tb\n");
    cli::CPrintableText text;
    EXPECT_EQ(text.Next("1: \ta\r"), "1: \ta");
    EXPECT_EQ(text.Next("\n2: \x1b[2J\r3\xC2"), "\r\n2: \\x1b[2J\\x0d3");
    EXPECT_EQ(text.Next("\x9B"
                        "b\xC2"),
              "\\x9b"
              "b");
    EXPECT_EQ(text.Next("\xA0\r"), "\xC2\xA0");
    EXPECT_EQ(text.Rest(), "\\x0d");
    EXPECT_EQ(cli::Printable("\xC3\xA4 \xC2\xA0 \xE6\x97\xA5"), "\xC3\xA4 \xC2\xA0 \xE6\x97\xA5");
    EXPECT_EQ(cli::Printable("\xC2\x9B"
                             "2J"),
              "\\x9b2J");
}

TEST(Summary, BytesAreRounded)
{
    const struct {
        std::uint64_t number;
        const char* text;
    } rows[] = {{1, "1 byte"},         {999, "999 bytes"},  {1000, "1.0 kB"},         {9949, "9.9 kB"},
                {46'000'000, "46 MB"}, {999'999, "1.0 MB"}, {1'200'000'000, "1.2 GB"}};
    for (const auto& row : rows) EXPECT_EQ(cli::Bytes(row.number), row.text);
}
