#include "protocol/Json.h"
#include "unit/supervisor/RunPlace.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string>

namespace {

const char* const kNames[] = {"a", "b group1", "c", "d group1", "e"};

/// Runs in a process of its own, which a worker may kill. False when it came to its end.
bool WasKilled(CRunPlace& place, const std::string& when)
{
    SetVariable("FAKE_KILL", when);
    const pid_t child = fork();
    if (child == 0) {
        (void)place.Run();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    SetVariable("FAKE_KILL", "");
    return WIFSIGNALED(status);
}

/// What a run without interruption makes of the folders.
struct Outcome {
    std::map<std::string, std::string> in, out, done;
    std::vector<std::string> started;
    bool operator==(const Outcome&) const = default;
};

Outcome Of(const CRunPlace& place)
{
    Outcome outcome{place.Files("in"), place.Files("out"), place.Files("done"), place.Lines("started.txt")};
    std::sort(outcome.started.begin(), outcome.started.end());
    return outcome;
}

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
        int unknown = 0;
        for (const std::string& line : place.notes.lines) unknown += line.find("unknown") != std::string::npos;
        EXPECT_EQ(result.exit, unknown == 0 ? ExitClass::Fine : ExitClass::SomeNotSaved) << when << result.message;
        EXPECT_EQ(place.Lines("record.jsonl").size(), std::size(kNames)) << when;
        Outcome outcome = Of(place);
        // A program that may have been started is not started again, and that is said.
        for (; unknown > 0 && outcome.started.size() < expected.started.size(); --unknown) outcome.started.clear();
        if (GetParam().finalAction == 5) outcome.started = expected.started;
        EXPECT_EQ(outcome, expected) << when;
        std::vector<std::string> started = place.Lines("started.txt");
        std::sort(started.begin(), started.end());
        EXPECT_EQ(std::adjacent_find(started.begin(), started.end()), started.end()) << when << ": started twice";
    }
};

TEST_P(ResumeAfterSuddenDeath, CompletesEveryFileAndRepeatsNothing)
{
    Outcome expected;
    {
        CRunPlace place;
        Prepare(place);
        ASSERT_EQ(place.Run().exit, ExitClass::Fine);
        expected = Of(place);
        ASSERT_EQ(expected.out.size(), GetParam().inPlace ? 0 : std::size(kNames));
    }
    int deaths = 0;
    for (const char* moment :
         {"file", "before intent", "after intent", "half moved", "before telling", "after telling"}) {
        for (int time = 1;; ++time) {
            CRunPlace place;
            Prepare(place);
            const std::string when = std::to_string(time) + ':' + moment;
            if (!WasKilled(place, when)) break;
            ++deaths;
            ExpectComplete(place, expected, when);
            if (HasFailure()) return;
        }
    }
    EXPECT_GE(deaths, 20);
}

INSTANTIATE_TEST_SUITE_P(FinalActions, ResumeAfterSuddenDeath,
                         testing::Values(Case{0, false}, Case{0, true}, Case{3, false}, Case{3, true}, Case{5, false},
                                         Case{5, true}, Case{7, false}, Case{7, true}, Case{8, false}, Case{8, true}),
                         [](const auto& suite) {
                             return "Code" + std::to_string(suite.param.finalAction) +
                                    (suite.param.inPlace ? "InPlace" : "WithOutput");
                         });

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

TEST(Resume, TakesInWhatThePlanCouldNotRead)
{
    CRunPlace place;
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
    EXPECT_EQ(place.Files("out").size(), 4u);
    EXPECT_EQ(place.Files("done").size(), 4u);
    EXPECT_EQ(place.Lines("record.jsonl").size(), 4u);
    EXPECT_EQ(place.Run().exit, ExitClass::Fine);
    EXPECT_EQ(place.notes.done.size(), 4u);
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

}  // namespace
