#include "openhost/jobs/WorkerLink.h"

#include <gtest/gtest.h>

#include "Pipes.h"
#include "platform/Surroundings.h"
#include "platform/TemporaryNames.h"

using namespace openhost;

namespace {

using Act = COverseer::Act;
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
    EXPECT_FALSE(first->onlyFinalAction);
    EXPECT_TRUE(second->onlyFinalAction);
    EXPECT_FALSE(third);
    EXPECT_FALSE(link.Broken());
    EXPECT_EQ(worker.supervisor.Said(), Asked("job") + Asked("input") + Asked("input") + Asked("input"));
}

TEST(WorkerLink, AsksBeforeActs)
{
    Linked worker("{\"answer\":\"go\"}\n{\"answer\":\"refuse\"}\n{\"answer\":\"pretend\"}\n{}\n");
    CWorkerLink& link = worker.link;
    EXPECT_EQ(link.MayAct({7, false, Act::Put, "/out/.t\xFF", "/out/a", "ab12"}), Answer::Go);
    EXPECT_EQ(link.MayAct({7, true, Act::Move, "/in/a", "/done/a", ""}), Answer::Refuse);
    EXPECT_EQ(link.MayAct({0, true, Act::Delete, "/in/a", "", ""}), Answer::Pretend);
    EXPECT_EQ(link.MayAct({7, true, Act::Start, "/in/a", "/bin/x", ""}), Answer::Refuse) << "no answer in it";
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
    EXPECT_EQ(worker.link.MayAct({1, false, Act::Put, "", "/out/a", ""}), Answer::Pretend);
    EXPECT_EQ(worker.link.Exists("/out/a"), true);
    EXPECT_EQ(worker.link.Exists("/in/a"), false);
    EXPECT_EQ(worker.link.Exists("/in/b"), std::nullopt);
}

TEST(WorkerLink, ALostSupervisorRefusesEverything)
{
    for (const char* const ending : {"", "{\"answer\":", "no answer\n", "[1]\n"}) {
        Linked worker(ending);
        EXPECT_FALSE(worker.link.Broken());
        EXPECT_EQ(worker.link.MayAct({1, false, Act::Put, "/f", "/t", ""}), Answer::Refuse) << ending;
        EXPECT_TRUE(worker.link.Broken()) << ending;
        EXPECT_FALSE(worker.link.NextInput()) << ending;
        EXPECT_EQ(worker.link.Job(), nullptr) << ending;
    }
    Linked worker("");
    worker.supervisor.StopReading();
    platform::SettleSurroundings();
    EXPECT_FALSE(worker.link.Remark("x")) << "nobody reads it";
    EXPECT_TRUE(worker.link.Broken());
}

TEST(WorkerLink, TellsWhatHappensAndKeepsEachInOneLine)
{
    CScriptedSupervisor supervisor("{}\n{}\n");
    {
        CWorkerLink link(supervisor.WorkerInput(), supervisor.WorkerOutput());
        link.RunStarts(-1);
        link.LogMark(kJobMarkSequencePreflightBegins);
        link.LogMark(kJobMarkSequencePreflightEnds);
        link.LogMark(77);
        link.Report(R"({"plan":{"total":1}})");
        link.Report("{\"a\":\n1}");
        link.Report("{\"a\":");
        EXPECT_TRUE(link.Remark("a \"b\"\nc\xFF"));
        link.RunEnds(kJobRunBroken, "why");
        link.Report("{}");
    }
    EXPECT_EQ(supervisor.Said(), R"({"tell":"starts","inputs":-1}
{"ask":"mark","mark":"sequence-preflight-begins"}
{"ask":"mark","mark":"sequence-preflight-ends"}
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
                            kJobFileIncomplete,
                            "no \"room\"",
                            12,
                            {{"/out/a.pdf", "bb"}, {"/out/b.pdf", ""}},
                            FileRecord::FinalAction{"move", "/done/a.pdf", false},
                            true};
    EXPECT_EQ(RecordLine(record),
              "{\"number\":7,\"path\":\"/in/\xEF\x9F\xBF.pdf\","
              R"("size":4711,"sha256":"aa","outcome":"incomplete",)"
              R"("message":"no \"room\"","milliseconds":12,"outputs":[{"path":"/out/a.pdf","sha256":"bb"},)"
              R"({"path":"/out/b.pdf","sha256":""}],"finalAction":{"act":"move","target":"/done/a.pdf",)"
              R"("state":"failed"},"signatures":"broken"})");
    int outcome = 0;
    for (const char* word : {"saved", "copied-unchanged", "incomplete", "failed", "skipped", "stopped", "failed"}) {
        FileRecord plain;
        plain.outcome = outcome++;
        EXPECT_EQ(RecordLine(plain), R"({"number":0,"path":"","size":0,"sha256":"","outcome":")" + std::string(word) +
                                         R"(","message":"","milliseconds":0,"outputs":[]})");
    }
}
