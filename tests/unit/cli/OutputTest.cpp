// What people see of a run and of sequences: progress, summary, steps and findings.
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/Arguments.h"
#include "cli/Console.h"
#include "cli/RunPrinter.h"
#include "cli/SequenceCommands.h"
#include "cli/Summary.h"
#include "protocol/Json.h"
#include "support/TemporaryFolder.h"

using testing::HasSubstr;
using testing::Not;

namespace {

/// A screen with a clock that the test turns, and a run that is printed on it.
struct Scene {
    std::ostringstream data, messages;
    std::uint64_t now = 0;
    cli::Screen screen{&data, &messages, false, false, [] { return std::size_t{80}; }, [this] { return now; }};
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
    std::string TakeMessages()
    {
        std::string text = messages.str();
        messages.str("");
        return text;
    }
};

Json Job(const std::vector<std::string>& words)
{
    auto parsed = cli::ParseArguments(*cli::FindCommand("sequence new"), words);
    EXPECT_TRUE(parsed.arguments) << parsed.problem;
    return cli::NewSequenceJob(*parsed.arguments);
}

}  // namespace

TEST(ProgressMeter, CountsBytesAndFilesOfThisStart)
{
    using cli::WorkDone;
    const struct {
        std::uint64_t files, bytes;
        WorkDone before, done;
        std::uint64_t now;
        const char* sentence;
    } rows[] = {
        {10, 100'000'000, {}, {9, 1'000'000, 0}, 1000, "9 of 10 files (2 %)"},
        {10, 0, {}, {5, 0, 0}, 1000, "5 of 10 files (50 %)"},
        {0, 0, {}, {}, 1000, "0 of 0 files (100 %)"},
        {100'000, 0, {}, {99'999, 0, 0}, 1000, "99,999 of 100,000 files (99 %)"},
        {100'000, 0, {}, {100'000, 0, 0}, 1000, "100,000 of 100,000 files (100 %)"},
        {10'000, 0, {4000, 0, 2}, {4000, 0, 2}, 61'000, "4,000 of 10,000 files (40 %), 2 not fine"},
        {10'000,
         0,
         {4000, 0, 2},
         {4600, 0, 3},
         61'000,
         "4,600 of 10,000 files (46 %), 3 not fine, 10 files/s, 9:00 left"},
        {1'234'567, 0, {}, {331, 0, 0}, 2000, "331 of 1,234,567 files (0 %), 331 files/s, 1:02:09 left"},
    };
    for (const auto& row : rows) {
        cli::CProgressMeter meter;
        meter.Begin(row.files, row.bytes, row.before, 1000);
        meter.Update(row.done);
        EXPECT_EQ(meter.Sentence(row.now), row.sentence);
    }
}

TEST(ProgressMeter, TheBarNeverExceedsTheWidthAndDropsTheLeastImportantFirst)
{
    cli::CProgressMeter meter;
    meter.Begin(10'000, 0, {}, 1000);
    meter.Update({.files = 4200, .bytes = 0, .notFine = 3});
    for (std::size_t width = 0; width < 130; ++width)
        EXPECT_LE(meter.Bar(43'000, width, false).size(), width) << width;
    EXPECT_EQ(meter.Bar(43'000, 90, false),
              "[=============>                  ]  42 %  4,200/10,000 files  3 not fine  0:58 left  100/s");
    EXPECT_EQ(meter.Bar(43'000, 40, false), " 42 %  4,200/10,000 files  3 not fine");
    EXPECT_EQ(meter.Bar(43'000, 40, true), " 42 %  4,200/10,000 files  \x1b[31m3 not fine\x1b[0m");
    EXPECT_EQ(meter.Bar(43'000, 8, false), " 42 %");
}

TEST(StatusLine, IsDrawnAnewTenTimesASecondOrAddedEveryFewSeconds)
{
    Scene fake;
    fake.screen.terminal = true;
    cli::CStatusLine line(fake.screen);
    int drawn = 0;
    const auto show = [&] {
        line.Show([&](std::size_t width) { return std::to_string(width) + "#" + std::to_string(++drawn); },
                  [&] { return std::to_string(fake.now); });
    };
    for (fake.now = 0; fake.now < 1000; fake.now += 10) show();
    EXPECT_EQ(drawn, 10);
    EXPECT_EQ(fake.TakeMessages().substr(0, 16), "\r\x1b[K79#1\r\x1b[K79#2");
    line.Message("hello");
    EXPECT_EQ(fake.TakeMessages(), "\r\x1b[Khello\n");
    line.Message("again");
    EXPECT_EQ(fake.TakeMessages(), "again\n");

    Scene plain;
    cli::CStatusLine lines(plain.screen);
    for (plain.now = 0; plain.now <= 11'000; plain.now += 100)
        lines.Show([](std::size_t) { return "bar"; }, [&] { return std::to_string(plain.now); });
    lines.Clear();
    EXPECT_EQ(plain.TakeMessages(), "ferrule: 5000\nferrule: 10000\n");
}

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
    const auto json = Json::parse(cli::SummaryJson(run.result));
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
    run.screen.milliseconds = [&run] { return run.now += 1000; };
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

TEST(SequenceNew, TakesPasswordsFromTheFirstLineOfFiles)
{
    const CTemporaryFolder folder;
    const auto job = Job({folder / "p.sequ", "--template", "protect", "--owner-password-file",
                          folder.Write("o", " blanks count \r\nsecond line"), "--user-password-file",
                          folder.Write("u", "K\xC3\xA4se"), "--method", "aes128", "--allow", "print, copy"});
    EXPECT_EQ(job["protect"], Json({{"method", "aes128"},
                                    {"userPassword", "K\xC3\xA4se"},
                                    {"ownerPassword", " blanks count "},
                                    {"allow", {"print", "copy"}}}));
    EXPECT_EQ(job["kind"], "sequence-new");
    EXPECT_EQ(job["overwrite"], false);
    EXPECT_FALSE(job["output"].contains("folder"));
    EXPECT_EQ(Job({"p", "--template", "protect", "--allow", "none"})["protect"]["allow"], Json::array());
    EXPECT_FALSE(Job({"p", "--template", "protect"})["protect"].contains("allow"));
}

TEST(SequenceNew, RefusesWhatCannotBeMeant)
{
    const CTemporaryFolder folder;
    const std::vector<std::string> rows[] = {
        {"p", "--template", "protect", "--owner-password-file", folder / "missing"},
        {"p", "--template", "protect", "--owner-password-file", folder.Write("empty", "\nx")},
        {"p", "--template", "protect", "--owner-password-file", "-", "--user-password-file", "-"},
        {"p", "--template", "save", "--method", "rc4"},
    };
    for (const auto& row : rows) EXPECT_THROW(Job(row), cli::CCommandError) << row.back();
}

TEST(SequenceShow, PrintsStepsWithNestedParameters)
{
    const auto sequence = Json::parse(R"({"path":"/s.sequ","form":"xml","title":"T","description":"",
        "holdsPasswords":true,"sources":[],"input":{"kind":"ask-user","words":"asked for"},
        "output":{"kind":"none","words":"the save step"},"groups":[{"label":"G","steps":[
        {"number":1,"handler":"H","title":"Protect","available":true,"prompts":false,"parameters":[
          {"name":"Password","type":"string","value":"********"},
          {"name":"Inner","type":"cab","value":[{"name":"n","type":"integer","value":3}]},
          {"name":"Flag","type":"boolean","value":false}]},
        {"number":2,"handler":"X\u001b","title":"","available":false,"prompts":true,"parameters":[]}]}]})");
    EXPECT_EQ(cli::SequenceText(sequence), R"(Sequence:    /s.sequ
Title:       T
Form:        XML
Input:       asked for
Output:      the save step
Passwords:   yes, in clear in the file

G
  1. H (Protect)
      Password = "********"
      Inner:
        n = 3
      Flag = false
  2. X\x1b, NOT AVAILABLE, wants to ask
)");
}

TEST(SequenceCheck, FindingsReadLikeThoseOfACompiler)
{
    EXPECT_EQ(cli::FindingText("a.sequ",
                               {{"severity", "error"}, {"code", "xml"}, {"text", "no"}, {"line", 3}, {"column", 7}}),
              "a.sequ:3:7: error: no [xml]\n");
    EXPECT_EQ(
        cli::FindingText("a.sequ", {{"severity", "warning"}, {"code", "prompt"}, {"text", "asks"}, {"step", 2}}),
        "a.sequ: warning: step 2: asks [prompt]\n");
}
