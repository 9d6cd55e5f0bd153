#include <gtest/gtest.h>

#include "platform/HeldFiles.h"
#include "protocol/Json.h"
#include "unit/supervisor/RunPlace.h"

namespace {

/// Without numbers and carriage returns; process numbers of the fake are blanked.
std::vector<std::string> LogOf(const CRunPlace& place)
{
    std::vector<std::string> entries;
    int number = 0;
    for (std::string line : place.Lines("log.txt")) {
        const std::string expected = std::to_string(++number) + ": ";
        EXPECT_TRUE(line.starts_with(expected) && line.ends_with('\r')) << line;
        line = line.substr(expected.size(), line.size() - expected.size() - 1);
        entries.push_back(line.starts_with("LOG STOPPED") ? "LOG STOPPED" : line);
    }
    return entries;
}

TEST(Run, WritesOneLogAndOneRecordInInputOrderForAnyNumberOfJobs)
{
    const std::string hyphens(86, '-');
    for (const int jobs : {1, 4}) {
        CRunPlace place;
        place.options.engine.jobs = jobs;
        place.FinalAction(7);
        std::vector<std::string> expected = {"LOG STARTED: today", "preamble", "\tNumber of input files : 8"};
        for (char letter = 'a'; letter < 'i'; ++letter) {
            const std::string name = std::string(1, letter) + ".pdf";
            place.Input(name);
            expected.push_back("file " + name);
            if (letter == 'a') expected.push_back("preflight");
            expected.insert(expected.end(), {"saved " + name, "final move"});
        }
        expected.insert(expected.end(), {"postflight", hyphens, "LOG STOPPED"});
        const RunResult result = place.Run();
        EXPECT_EQ(result.exit, ExitClass::Fine) << result.message;
        EXPECT_EQ(LogOf(place), expected) << jobs << " jobs";
        EXPECT_EQ(place.Lines("record.jsonl").size(), 8u);
        EXPECT_EQ(place.Lines("record.jsonl"), place.notes.lines);
        int number = 0;
        for (const std::string& line : place.notes.lines) EXPECT_EQ(CountAt(*ParseObject(line), "number"), ++number);
        EXPECT_EQ(place.Files("out").at("c.pdf"), "TEXT OF C.PDF");
        EXPECT_EQ(place.Files("done").at("c.pdf"), "text of c.pdf");
        EXPECT_TRUE(place.Files("in").empty());
        EXPECT_EQ(place.notes.last.bytesDone, place.notes.last.bytesTotal);
    }
}

TEST(Run, ABadFileCostsOnlyItselfAndWhatWasWrittenIsFinished)
{
    const std::string aborted = std::string("The worker ") + kAborted + " while it processed the file.";
    const FileOutcome failed = FileOutcome::Failed, saved = FileOutcome::Saved, incomplete = FileOutcome::Incomplete;
    const struct {
        const char* name;
        FileOutcome outcome;
        bool written, moved;
        std::string reason;
    } rows[] = {
        {"crash", failed, false, false, aborted},
        {"exit", failed, false, false, "The worker ended with exit code 3 while it processed the file."},
        {"garbage", failed, false, false, "The worker wrote something that is no message."},
        {"lie", failed, false, false, "The worker wanted to act on a file that it does not have."},
        {"grow", failed, false, false, "The file needed more than 64 MiB of memory."},
        {"hang", failed, false, false, "The file took longer than 5 s."},
        {"dies temporary", failed, false, false, aborted},
        {"silent", incomplete, true, false, "The worker did not tell what became of the file."},
        {"dies before output", failed, false, false, aborted},
        {"dies after output", saved, true, true, aborted},
        {"dies before final-action", saved, true, true, aborted},
        {"dies half moved", saved, true, true, aborted},
        {"dies after final-action", saved, true, true, aborted},
        {"always dies at its final-action", incomplete, true, false, aborted},
        {"fine 1", saved, true, true, ""},
        {"fine 2", saved, true, true, ""},
        {"flood", saved, true, true, ""},
    };
    CRunPlace place;
    place.options.engine.timeoutSeconds = 5;  // a slow machine must not take the flood for a hang
    place.options.engine.memoryBytes = 64 << 20;
    for (const auto& row : rows) place.Input(row.name);
    place.FinalAction(7);
    const RunResult result = place.Run();
    EXPECT_EQ(result.exit, ExitClass::SomeNotSaved) << result.message;
    EXPECT_EQ(place.notes.done.size(), std::size(rows)) << "each file has one outcome";
    for (const auto& row : rows) {
        const FileRecord record = place.notes.Of(row.name);
        EXPECT_EQ(record.outcome, row.outcome) << row.name << ": " << record.message;
        EXPECT_EQ(record.message, row.reason) << row.name;
        EXPECT_EQ(record.outputs.size(), row.written ? 1u : 0u) << row.name;
        if (row.written) {
            EXPECT_EQ(record.outputs.at(0).path, place.folder / ("out/" + std::string(row.name)));
        }
        EXPECT_EQ(place.Files("out").count(row.name), row.written ? 1u : 0u) << row.name;
        EXPECT_EQ(place.Files("done").count(row.name), row.moved ? 1u : 0u) << row.name;
        EXPECT_EQ(place.Files("in").count(row.name), row.moved ? 0u : 1u) << row.name;
        EXPECT_EQ(record.finalAction && record.finalAction->state == FinalActionRecord::State::Done, row.moved)
            << row.name;
    }
    const std::string log = place.Text("log.txt");
    EXPECT_NE(log.find("file crash\r\n"), std::string::npos);
    EXPECT_NE(log.find(std::string("ERROR: The worker ") + kAborted), std::string::npos);
    EXPECT_EQ(log.find(": preflight\r\n"), log.rfind(": preflight\r\n")) << "that of a file begun again:\n" << log;
    for (const auto& [name, text] : place.Files("out")) EXPECT_FALSE(name.starts_with(".ferrule")) << name;
}

TEST(Run, DoesNotTouchWhatChangedSinceThePlan)
{
    class CChanger : public CNotes {
    public:
        explicit CChanger(const CRunPlace& place) : m_place(place) {}
        void Planned(const PlanSummary& summary) override
        {
            CNotes::Planned(summary);
            m_place.folder.Write("in/b", "another text");
            std::filesystem::remove(m_place.folder / "in/c");
        }

    private:
        const CRunPlace& m_place;
    };
    CRunPlace place;
    for (const char* name : {"a", "b", "c"}) place.Input(name);
    CChanger notes(place);
    const RunResult result = RunPlanned(place.options, notes);
    EXPECT_EQ(result.exit, ExitClass::SomeNotSaved);
    EXPECT_EQ(result.Count(FileOutcome::Skipped), 2);
    EXPECT_EQ(notes.Of("b").message, "changed since plan");
    EXPECT_EQ(notes.Of("c").message, "missing since plan");
    EXPECT_EQ(place.Files("out").size(), 1u);
    place.options.resume = place.options.retryFailed = true;
    EXPECT_EQ(place.Run().Count(FileOutcome::Saved), 2) << "who asks again knows that it has changed";
}

TEST(Run, SaysWhyItDoesNotStart)
{
    const struct {
        const char* sequence;
        const char* host;
        const char* message;
    } rows[] = {{"not there", FAKE_WORKER, "as asked"},
                {"does not start", FAKE_WORKER, "no plug-in"},
                {"asks for nothing", FAKE_WORKER, "before it asked for a file"},
                {"a sequence", "/no/such/host", "cannot be started"}};
    for (const auto& row : rows) {
        CRunPlace place;
        place.Input("a");
        place.options.request.work = SequenceWork(row.sequence);
        place.options.engine.hostProgram = row.host;
        const RunResult result = place.Run();
        EXPECT_EQ(result.exit, ExitClass::Broken);
        EXPECT_NE(result.message.find(row.message), std::string::npos) << result.message;
        EXPECT_TRUE(place.Files("out").empty());
    }
}

TEST(Run, WorkersThatCannotBeginEndItOnlyWhenNoneCan)
{
    CRunPlace place;
    place.options.engine.jobs = 1;
    place.options.request.work = SequenceWork("asks every other time");
    for (const char* name : {"a exit", "b exit", "c exit", "d"}) place.Input(name);
    const RunResult result = place.Run();
    EXPECT_EQ(result.Count(FileOutcome::Saved), 1) << result.message;
    EXPECT_EQ(result.Count(FileOutcome::Failed), 3);
}

TEST(Run, BreaksWhenAWorkerSaysSoAndIsCompletedByResume)
{
    CRunPlace place;
    place.options.engine.jobs = 1;
    for (const char* name : {"a", "b break", "c"}) place.Input(name);
    const RunResult broken = place.Run();
    EXPECT_EQ(broken.exit, ExitClass::Broken);
    EXPECT_EQ(broken.message, "as asked");
    EXPECT_EQ(place.Files("out").size(), 1u);
    EXPECT_EQ(broken.remaining, 1);
    place.options.resume = true;
    const RunResult resumed = place.Run();
    EXPECT_EQ(resumed.exit, ExitClass::SomeNotSaved) << resumed.message;
    EXPECT_EQ(place.Files("out").size(), 2u);
    EXPECT_EQ(place.Lines("record.jsonl").size(), 3u);
}

TEST(Run, SequencesThatKeepSomethingBetweenFilesHaveOneWorker)
{
    CRunPlace place;
    place.options.request.work = SequenceWork("one worker");
    place.options.engine.jobs = 8;
    for (int file = 0; file < 20; ++file) place.Input(std::to_string(file));
    EXPECT_EQ(place.Run().exit, ExitClass::Fine);
    EXPECT_EQ(place.notes.summaries.at(0).oneWorkerReason, "for a reason");
    int number = 0;
    for (const FileRecord& record : place.notes.done) EXPECT_EQ(record.number, ++number);
}

TEST(Run, GoesOnWithoutALogThatAnotherRunHolds)
{
    CRunPlace place;
    place.Input("a");
    place.folder.Write("log.txt", "");
    platform::CLogFile other;
    ASSERT_TRUE(other.Open(place.folder / "log.txt", true));
    const RunResult result = place.Run();
    other.Close();
    EXPECT_EQ(result.exit, ExitClass::Fine);
    EXPECT_EQ(place.Text("log.txt"), "");
    EXPECT_EQ(place.notes.warnings.size(), 1u);
    EXPECT_EQ(result.logPath, "");
}

TEST(Run, TheFirstInterruptBeginsNoFurtherFileAndResumeGoesOn)
{
    class CInterrupter : public CNotes {
    public:
        void FileDone(const FileRecord& record, const RunProgress& progress) override
        {
            CNotes::FileDone(record, progress);
            if (done.size() == 3) Interrupt();
        }
    };
    CRunPlace place;
    for (int file = 0; file < 12; ++file) place.Input(std::to_string(file));
    CInterrupter notes;
    const RunResult result = RunPlanned(place.options, notes);
    EXPECT_EQ(result.exit, ExitClass::Stopped);
    EXPECT_GE(result.Count(FileOutcome::Saved), 3);
    EXPECT_GT(result.remaining, 0);
    EXPECT_EQ(place.Files("out").size(), static_cast<std::size_t>(result.Count(FileOutcome::Saved)));
    place.options.resume = true;
    EXPECT_EQ(place.Run().exit, ExitClass::Fine);
    EXPECT_EQ(place.Files("out").size(), 12u);
    EXPECT_EQ(place.notes.done.size() + notes.done.size(), 12u) << "nothing is done twice";
    EXPECT_EQ(place.Lines("record.jsonl").size(), 12u);
}

TEST(Run, TheSecondInterruptStopsFilesThatAreBeingProcessed)
{
    class CImpatient : public CNotes {
    public:
        void Tick(const RunProgress& progress) override
        {
            if (progress.filesTotal != 0 && ++ticks <= 2) Interrupt();
        }
        int ticks = 0;
    };
    CRunPlace place;
    for (const char* name : {"hang 1", "hang 2", "later"}) place.Input(name);
    CImpatient notes;
    const RunResult result = RunPlanned(place.options, notes);
    EXPECT_EQ(result.exit, ExitClass::Stopped);
    EXPECT_EQ(result.Count(FileOutcome::Stopped) + result.remaining, 3);
    EXPECT_TRUE(place.Files("out").empty());
}

}  // namespace
