#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "supervisor/RunFolder.h"
#include "supervisor/journal/JournalIndex.h"
#include "unit/supervisor/RunPlace.h"

namespace {

const char* const kNames[] = {"a", "b group1", "c", "d group1", "e"};

/// How a process ended that did this.
int StatusOf(const std::function<void()>& work)
{
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

/// Runs in a process of its own, which a worker may kill. False when it came to its end.
bool WasKilled(CRunPlace& place, const std::string& when)
{
    SetVariable("FAKE_KILL", when);
    const int status = StatusOf([&] { (void)place.Run(); });
    SetVariable("FAKE_KILL", "");
    return WIFSIGNALED(status);
}

/// What a run leaves: the files of its folders, and how often a program was started for each of them.
struct Outcome {
    explicit Outcome(const CRunPlace& place)
        : in(place.Files("in")), out(place.Files("out")), done(place.Files("done"))
    {
        for (const std::string& line : place.Lines("started.txt")) ++started[line];
    }
    std::map<std::string, std::string> in, out, done;
    std::map<std::string, int> started;
};

struct Case {
    int finalAction;
    bool inPlace;
};

class ResumeAfterSuddenDeath : public testing::TestWithParam<Case> {
protected:
    static void Prepare(CRunPlace& place)
    {
        if (GetParam().inPlace) place.InPlace();
        if (GetParam().finalAction != 0) place.FinalAction(GetParam().finalAction);
        for (const char* name : kNames) place.Input(name);
    }

    static void ExpectComplete(CRunPlace& place, const Outcome& expected, const std::string& when)
    {
        place.options.resume = true;
        const RunResult result = place.Run();
        std::size_t unknown = 0;
        for (const std::string& line : place.notes.lines) unknown += line.find("unknown") != std::string::npos;
        EXPECT_EQ(result.exit, unknown == 0 ? ExitClass::Fine : ExitClass::SomeNotSaved) << when << result.message;
        EXPECT_EQ(place.Lines("record.jsonl").size(), std::size(kNames)) << when;
        const Outcome outcome(place);
        EXPECT_EQ(outcome.in, expected.in) << when;
        EXPECT_EQ(outcome.out, expected.out) << when;
        EXPECT_EQ(outcome.done, expected.done) << when;
        // A program that may have been started is not started again, and that is said.
        EXPECT_GE(outcome.started.size() + unknown, expected.started.size()) << when;
        for (const auto& [name, times] : outcome.started)
            EXPECT_EQ(times, 1) << when << ": started twice for " << name;
    }
};

TEST_P(ResumeAfterSuddenDeath, CompletesEveryFileAndRepeatsNothing)
{
    CRunPlace undisturbed;
    Prepare(undisturbed);
    ASSERT_EQ(undisturbed.Run().exit, ExitClass::Fine);
    const Outcome expected(undisturbed);
    ASSERT_EQ(expected.out.size(), GetParam().inPlace ? 0 : std::size(kNames));
    int deaths = 0;
    for (const char* moment :
         {"file", "before intent", "after intent", "half moved", "before telling", "after telling"}) {
        for (int time = 1; !HasFailure(); ++time, ++deaths) {
            CRunPlace place;
            Prepare(place);
            const std::string when = std::to_string(time) + ':' + moment;
            if (!WasKilled(place, when)) break;
            ExpectComplete(place, expected, when);
        }
    }
    EXPECT_GE(deaths, 20);
}

INSTANTIATE_TEST_SUITE_P(FinalActions, ResumeAfterSuddenDeath,
                         testing::Values(Case{0, false}, Case{0, true}, Case{3, false}, Case{3, true}, Case{5, false},
                                         Case{5, true}, Case{7, false}, Case{7, true}, Case{8, false},
                                         Case{8, true}));

TEST(Resume, AFinishedRunHasNothingLeftToDo)
{
    CRunPlace place;
    for (const char* name : kNames) place.Input(name);
    ASSERT_EQ(place.Run().exit, ExitClass::Fine);
    const std::string log = place.Text("log.txt"), record = place.Text("record.jsonl");
    place.options.resume = true;
    place.notes = {};
    const RunResult result = place.Run();
    EXPECT_EQ(result.exit, ExitClass::Fine);
    EXPECT_TRUE(place.notes.done.empty());
    EXPECT_EQ(place.notes.summaries.at(0).alreadyDone, 5);
    EXPECT_EQ(place.Text("log.txt"), log);
    EXPECT_EQ(place.Text("record.jsonl"), record);
}

TEST(Resume, RetriesWhatWasNotSavedWhenAsked)
{
    CRunPlace place;
    for (const char* name : {"a", "b crash", "c fail"}) place.Input(name);
    EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved);
    place.options.resume = true;
    place.notes = {};
    EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved);
    EXPECT_TRUE(place.notes.done.empty()) << "not asked";
    place.options.retryFailed = true;
    EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved);
    EXPECT_EQ(place.notes.done.size(), 2u);
    EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved) << "a journal with repeated files is read again";
    EXPECT_EQ(place.Lines("record.jsonl").size(), 3u);
    EXPECT_EQ(place.Files("out").count("a (1)"), 0u);
    const std::vector<std::string> logged = {"a", "b crash", "c fail", "b crash", "c fail", "b crash", "c fail"};
    EXPECT_EQ(place.FilesLogged(), logged) << "each start logs what it did";
}

TEST(Resume, ARetriedFileTakesTheNamesThatItHadAndNothingHappensTwice)
{
    for (const bool inPlace : {false, true}) {
        CRunPlace place;
        if (inPlace) place.InPlace();
        for (const char* name : {"a group1", "b group1 partly", "c group1"}) place.Input(name);
        EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved);
        const auto in = place.Files("in"), out = place.Files("out");
        place.options.resume = place.options.retryFailed = true;
        for (int time = 0; time < 2; ++time) {
            EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved);
            EXPECT_EQ(place.Files("in"), in);
            EXPECT_EQ(place.Files("out"), out);
            EXPECT_EQ(place.Lines("record.jsonl").size(), 3u);
        }
        place.folder.Write("in/b group1 partly", "another text");
        EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved);
        EXPECT_EQ(place.Files("out"), out) << "what was made of a file stays when the file is another one now";
    }
}

TEST(Resume, AProgramThatMayHaveBeenStartedIsNotStartedByARetry)
{
    CRunPlace place;
    place.FinalAction(5);
    place.Input("a dies after final-action");
    EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved);
    EXPECT_EQ(place.notes.Of("a dies after final-action").finalAction->state, FinalActionRecord::State::Unknown);
    place.options.resume = place.options.retryFailed = true;
    for (int time = 0; time < 2; ++time) EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved);
    EXPECT_EQ(place.Lines("started.txt").size(), 1u);
    EXPECT_EQ(place.notes.Of("a dies after final-action").finalAction->state, FinalActionRecord::State::Unknown);
    EXPECT_EQ(place.FilesLogged(), std::vector<std::string>{"a dies after final-action"}) << "nothing was done again";
}

TEST(Resume, TakesInWhatThePlanCouldNotReadButNoResults)
{
    for (const char* results : {"out", "in"}) {
        CRunPlace place;
        place.options.request.outputFolder = place.folder / results;
        place.FinalAction(8);
        for (const char* name : {"a hidden group1", "b group1", "c hidden group1", "d"}) place.Input(name);
        SetVariable("FAKE_BLIND", "1");
        EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved);
        EXPECT_EQ(place.notes.done.size(), 2u);
        place.options.resume = true;
        EXPECT_EQ(place.Run().exit, ExitClass::SomeNotSaved) << "still unreadable";
        SetVariable("FAKE_BLIND", "");
        EXPECT_EQ(place.Run().exit, ExitClass::Fine);
        EXPECT_EQ(place.notes.done.size(), 4u) << "nothing is done twice";
        EXPECT_EQ(place.Files("in").size() + place.Files("out").size(), 8u);
        EXPECT_EQ(place.Files("done").size(), 4u);
        EXPECT_EQ(place.Lines("record.jsonl").size(), 4u);
        EXPECT_EQ(place.Run().exit, ExitClass::Fine);
        EXPECT_EQ(place.notes.done.size(), 4u);
    }
}

TEST(Resume, APlainRunOverAnUnfinishedOneBeginsAnewAndSaysSo)
{
    CRunPlace place;
    place.FinalAction(7);
    for (const char* name : {"a", "b"}) place.Input(name);
    place.options.engine.jobs = 1;
    ASSERT_TRUE(WasKilled(place, "1:half moved"));
    EXPECT_EQ(place.Files("in").count("a"), 1u) << "the move was interrupted";
    place.folder.Write("in/c", "came later");
    EXPECT_EQ(place.Run().exit, ExitClass::Fine);
    ASSERT_EQ(place.notes.warnings.size(), 1u);
    EXPECT_NE(place.notes.warnings[0].find("0 of 2 files were done"), std::string::npos) << place.notes.warnings[0];
    EXPECT_EQ(place.notes.planned.size(), 2u) << "the interrupted move is completed, not repeated";
    EXPECT_EQ(place.Files("done").size(), 3u);
}

TEST(Resume, TwoRunsOfOneRequestExcludeEachOther)
{
    class CRival : public CNotes {
    public:
        explicit CRival(const RunOptions& options) : m_options(options) {}
        void Planned(const PlanSummary&) override
        {
            CNotes none;
            rival = RunPlanned(m_options, none);
        }
        RunResult rival;

    private:
        const RunOptions& m_options;
    };
    CRunPlace place;
    place.Input("a");
    CRival notes(place.options);
    EXPECT_EQ(RunPlanned(place.options, notes).exit, ExitClass::Fine);
    EXPECT_EQ(notes.rival.exit, ExitClass::Broken);
    EXPECT_NE(notes.rival.message.find("another process"), std::string::npos) << notes.rival.message;
}

TEST(Journal, GoesOnBehindItsLastWholeLineAfterTheDiskWasFull)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "journal";
    const auto write = [&] {
        const auto allow = [](rlim_t bytes) {
            rlimit limit = {};
            (void)getrlimit(RLIMIT_FSIZE, &limit);
            limit.rlim_cur = bytes;
            return setrlimit(RLIMIT_FSIZE, &limit) == 0;
        };
        (void)std::signal(SIGXFSZ, SIG_IGN);
        CJournalWriter writer;
        const bool good = writer.Open(path, {"run", "1/1"}, 0) && allow(std::filesystem::file_size(path) + 9) &&
                          !writer.AddIntent({.number = 1, .act = Act::Put, .target = "/o"}) && allow(RLIM_INFINITY) &&
                          writer.AddEnd("broken", {});
        _exit(good ? 0 : 1);
    };
    EXPECT_EQ(StatusOf(write), 0);
    CDoneIndex done(1);
    CJournalIndex index(done);
    ASSERT_TRUE(ReadJournal(path, "run", index));
    EXPECT_EQ(index.Ending(), "broken");
    EXPECT_TRUE(index.Open().empty());
}

TEST(ScratchFolder, IsPrivateAndWhatKilledProcessesLeftIsSwept)
{
    namespace fs = std::filesystem;
    const CTemporaryFolder temporary, elsewhere;
    const std::string former = platform::EnvironmentText("TMPDIR");
    SetVariable("TMPDIR", temporary.Path());
    const auto victim = elsewhere.Write("lock", "somebody's");
    fs::create_directory_symlink(elsewhere.Path(), temporary / "ferrule-scratch-link");
    const auto young = temporary.MakeFolder("ferrule-scratch-young");  // being made by another process
    EXPECT_EQ(StatusOf([] {
                  const CScratchFolder scratch;
                  fs::create_directories(scratch.Path() + "/worker-1/deep");
                  _exit(scratch.Path().empty() ? 1 : 0);
              }),
              0);
    EXPECT_EQ(temporary.EntryCount(), 3u) << "the killed one left its folder";
    {
        const CScratchFolder first;
        EXPECT_EQ(fs::status(first.Path()).permissions(), fs::perms(0700));
        EXPECT_EQ(temporary.EntryCount(), 3u) << "swept";
        const CScratchFolder second;
        EXPECT_TRUE(fs::exists(first.Path())) << "a living one stays";
        EXPECT_NE(first.Path(), second.Path());
        EXPECT_EQ(temporary.EntryCount(), 4u);
    }
    fs::last_write_time(young, fs::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_TRUE(geteuid() != 0 || chown(young.c_str(), 4711, 4711) == 0);
    {
        const CScratchFolder third;
    }
    EXPECT_EQ(fs::exists(young), geteuid() == 0) << "another user's is not touched";
    EXPECT_EQ(FileBytes(victim), "somebody's");
    SetVariable("TMPDIR", former);
}

TEST(ScratchFolder, NoneIsSweptThatIsJustBeingMade)
{
    const CTemporaryFolder temporary;
    const std::string former = platform::EnvironmentText("TMPDIR");
    SetVariable("TMPDIR", temporary.Path());
    std::vector<pid_t> makers(4);
    for (pid_t& maker : makers) {
        maker = fork();
        if (maker != 0) continue;
        for (int i = 0; i < 1000; ++i) {
            const CScratchFolder scratch;
            if (!platform::FolderExists(scratch.Path())) _exit(1);
        }
        _exit(0);
    }
    for (const pid_t maker : makers) {
        int status = -1;
        EXPECT_EQ(waitpid(maker, &status, 0), maker);
        EXPECT_EQ(status, 0);
    }
    SetVariable("TMPDIR", former);
}

}  // namespace
