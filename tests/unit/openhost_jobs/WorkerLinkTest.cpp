#include "openhost/jobs/WorkerLink.h"

#include <gtest/gtest.h>

#include "Pipes.h"
#include "platform/AtomicFile.h"
#include "platform/ThisProcess.h"

using namespace openhost;

namespace {

using Answer = COverseer::Answer;

/// A link to a supervisor that gives these answers.
struct Linked {
    explicit Linked(std::string_view answers) : supervisor(answers) {}
    CScriptedSupervisor supervisor;
    CWorkerLink link{supervisor.WorkerInput(), supervisor.WorkerOutput()};
};

std::string Asked(const char* what) { return std::string("{\"ask\":\"") + what + "\"}\n"; }

}  // namespace

TEST(WorkerLink, HandsOutJobAndInputsInHostEncoding)
{
    const std::string job = R"({"kind":"run","run":"k3.v9","settings":{"A":")"
                            "\xC3\xBC"
                            R"("}})";
    Linked worker("{\"job\":" + job + "}\n" +
                  "{\"input\":{\"number\":7,\"total\":9,\"path\":\"/in/x\xEF\x9F\xBCy\",\"toDo\":\"whole\"}}\n" +
                  R"({"input":{"number":8,"total":9,"path":"/in/z","toDo":"final-action"}})" +
                  "\n{\"input\":null}\n");
    CWorkerLink& link = worker.link;
    EXPECT_FALSE(link.Pretends());
    ASSERT_TRUE(link.Job());
    EXPECT_EQ(*link.Job(), job);
    EXPECT_EQ(platform::TemporaryPrefix("k3v9"), ".ferrule-k3v9-");
    const auto first = link.NextInput(), second = link.NextInput(), third = link.NextInput();
    platform::SetTemporaryTag("");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->path, "/in/x\xFCy") << "the very bytes of the name";
    EXPECT_EQ(first->number, 7);
    EXPECT_EQ(first->total, 9);
    EXPECT_EQ(first->toDo, ToDo::Whole);
    EXPECT_EQ(second->toDo, ToDo::FinalAction);
    EXPECT_FALSE(third);
    EXPECT_FALSE(link.Broken());
    EXPECT_EQ(worker.supervisor.Said(), Asked("job") + Asked("input") + Asked("input") + Asked("input"));
}

TEST(WorkerLink, AsksBeforeActs)
{
    Linked worker("{\"answer\":\"go\"}\n{\"answer\":\"refuse\"}\n{\"answer\":\"pretend\"}\n{}\n");
    CWorkerLink& link = worker.link;
    EXPECT_EQ(link.MayAct({7, false, Act::Put, "/out/.t\xFF", "/out/a", "ab12", false}), Answer::Go);
    EXPECT_EQ(link.MayAct({7, true, Act::Move, "/in/a", "/done/a", "", false}), Answer::Refuse);
    EXPECT_EQ(link.MayAct({0, true, Act::Delete, "/in/a", "", "", false}), Answer::Pretend);
    EXPECT_EQ(link.MayAct({7, true, Act::Start, "/in/a", "/bin/x", "", false}), Answer::Refuse) << "no answer in it";
    const auto act = [](int number, const char* purpose, const std::string& rest) {
        return "{\"ask\":\"act\",\"number\":" + std::to_string(number) + ",\"purpose\":\"" + purpose +
               "\",\"act\":" + rest + "\"}\n";
    };
    EXPECT_EQ(worker.supervisor.Said(),
              act(7, "output", "\"put\",\"file\":\"/out/.t\xEF\x9F\xBF\",\"target\":\"/out/a\",\"sha256\":\"ab12") +
                  act(7, "final-action", R"("move","file":"/in/a","target":"/done/a","sha256":")") +
                  act(0, "final-action", R"("delete","file":"/in/a","target":"","sha256":")") +
                  act(7, "final-action", R"("start","file":"/in/a","target":"/bin/x","sha256":")"));
}

TEST(WorkerLink, ATrialDoesNothingEvenWhenItIsAllowedTo)
{
    Linked worker(
        "{\"job\":{\"kind\":\"run\",\"dryRun\":true}}\n{\"answer\":\"go\"}\n"
        "{\"exists\":true}\n{\"exists\":false}\n{\"exists\":null}\n");
    EXPECT_TRUE(worker.link.Pretends());
    EXPECT_EQ(worker.link.MayAct({1, false, Act::Put, "", "/out/a", "", false}), Answer::Pretend);
    EXPECT_EQ(worker.link.Exists("/out/a"), true);
    EXPECT_EQ(worker.link.Exists("/in/a"), false);
    EXPECT_EQ(worker.link.Exists("/in/b"), std::nullopt);
}

TEST(WorkerLink, ALostSupervisorRefusesEverything)
{
    for (const char* const ending : {"", "{\"answer\":", "no answer\n", "[1]\n"}) {
        Linked worker(ending);
        EXPECT_FALSE(worker.link.Broken());
        EXPECT_EQ(worker.link.MayAct({1, false, Act::Put, "/f", "/t", "", false}), Answer::Refuse) << ending;
        EXPECT_TRUE(worker.link.Broken()) << ending;
        EXPECT_FALSE(worker.link.NextInput()) << ending;
        EXPECT_EQ(worker.link.Job(), nullptr) << ending;
    }
    Linked worker("");
    worker.supervisor.StopReading();
    platform::PrepareProcess();
    EXPECT_FALSE(worker.link.Remark("x")) << "nobody reads it";
    EXPECT_TRUE(worker.link.Broken());
}

TEST(WorkerLink, TellsWhatHappensAndKeepsEachInOneLine)
{
    CScriptedSupervisor supervisor("{}\n{}\n{}\n");
    {
        CWorkerLink link(supervisor.WorkerInput(), supervisor.WorkerOutput());
        link.RunStarts(-1);
        for (const LogPlace place :
             {LogPlace::SequencePreflightBegins, LogPlace::SequencePreflightEnds, LogPlace::InputsCounted})
            link.LogMark(place);
        link.Report(R"({"plan":{"total":1}})");
        link.Report("{\"a\":\n1}");
        link.Report("{\"a\":");
        EXPECT_TRUE(link.Remark("a \"b\"\nc\xFF"));
        link.RunEnds(RunEnd::Broken, "why");
        link.Report("{}");
    }
    EXPECT_EQ(supervisor.Said(), R"({"tell":"starts","inputs":-1}
{"ask":"mark","mark":"sequence-preflight-begins"}
{"ask":"mark","mark":"sequence-preflight-ends"}
{"ask":"mark","mark":"inputs-counted"}
{"tell":"report","report":{"plan":{"total":1}}}
{"tell":"report","report":{"a":1}}
{"tell":"remark","text":"a report is no JSON and is left out"}
{"tell":"remark","text":"a \"b\"\nc)"
                                 "\xEF\x9F\xBF"
                                 R"("}
{"tell":"ends","end":"broken","message":"why"}
{"tell":"report","report":{}}
)");
}

TEST(WorkerLink, WritesRecordsAsTheyAreDocumented)
{
    const FileRecord record{7,
                            "/in/\xFF.pdf",
                            4711,
                            "aa",
                            FileOutcome::Incomplete,
                            "no \"room\"",
                            12,
                            {{"/out/a.pdf", "bb"}, {"/out/b.pdf", ""}},
                            FinalActionRecord{Act::Move, "/done/a.pdf", FinalActionRecord::State::Failed},
                            true};
    EXPECT_EQ(LineOf(FileRecordJson(record)),
              "{\"number\":7,\"path\":\"/in/\xEF\x9F\xBF.pdf\","
              R"("size":4711,"sha256":"aa","outcome":"incomplete",)"
              R"("message":"no \"room\"","milliseconds":12,"outputs":[{"path":"/out/a.pdf","sha256":"bb"},)"
              R"({"path":"/out/b.pdf","sha256":""}],"finalAction":{"act":"move","target":"/done/a.pdf",)"
              R"("state":"failed"},"signatures":"broken"})");
    int outcome = 0;
    for (const char* word : {"saved", "copied-unchanged", "incomplete", "failed", "skipped", "stopped"}) {
        FileRecord plain;
        plain.outcome = static_cast<FileOutcome>(outcome++);
        EXPECT_EQ(LineOf(FileRecordJson(plain)), R"({"number":0,"path":"","size":0,"sha256":"","outcome":")" +
                                                     std::string(word) +
                                                     R"(","message":"","milliseconds":0,"outputs":[]})");
    }
}
