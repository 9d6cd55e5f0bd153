#include "openhost/jobs/WorkerLink.h"
#include "platform/TemporaryNames.h"

#include <gtest/gtest.h>

#include "Pipes.h"
#include "platform/Surroundings.h"

using namespace openhost;

namespace {

using Act = COverseer::Act;
using Answer = COverseer::Answer;

struct CTagReset {
    ~CTagReset() { platform::SetTemporaryTag(""); }
};

}  // namespace

TEST(WorkerLink, HandsOutJobAndInputsInHostEncoding)
{
    const CTagReset reset;
    CScriptedSupervisor supervisor(
        "{\"job\":{\"kind\":\"run\",\"run\":\"k3.v9\",\"settings\":{\"A\":\"\xC3\xBC\"}}}\n"
        "{\"input\":{\"number\":7,\"total\":9,\"path\":\"/in/x\xEF\x9F\xBCy\","
        "\"toDo\":\"whole\"}}\n"
        "{\"input\":{\"number\":8,\"total\":9,\"path\":\"/in/z\",\"toDo\":\"final-action\"}}\n"
        "{\"input\":null}\n");
    CWorkerLink link(supervisor.WorkerInput(), supervisor.WorkerOutput());
    EXPECT_FALSE(link.Pretends());
    ASSERT_TRUE(link.Job());
    EXPECT_EQ(*link.Job(), "{\"kind\":\"run\",\"run\":\"k3.v9\",\"settings\":{\"A\":\"\xC3\xBC\"}}");
    EXPECT_EQ(platform::TemporaryPrefix("k3v9"), ".ferrule-k3v9-");
    const auto first = link.NextInput(), second = link.NextInput(), third = link.NextInput();
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->path, "/in/x\xFCy") << "the very bytes of the name";
    EXPECT_EQ(first->number, 7);
    EXPECT_EQ(first->total, 9);
    EXPECT_FALSE(first->onlyFinalAction);
    EXPECT_TRUE(second->onlyFinalAction);
    EXPECT_FALSE(third);
    EXPECT_FALSE(link.Broken());
    EXPECT_EQ(supervisor.Said(),
              "{\"ask\":\"job\"}\n{\"ask\":\"input\"}\n{\"ask\":\"input\"}\n{\"ask\":\"input\"}\n");
}

TEST(WorkerLink, AsksBeforeActs)
{
    CScriptedSupervisor supervisor("{\"answer\":\"go\"}\n{\"answer\":\"refuse\"}\n{\"answer\":\"pretend\"}\n{}\n");
    CWorkerLink link(supervisor.WorkerInput(), supervisor.WorkerOutput());
    EXPECT_EQ(link.MayAct({7, false, Act::Put, "/out/.t\xFF", "/out/a", "ab12"}), Answer::Go);
    EXPECT_EQ(link.MayAct({7, true, Act::Move, "/in/a", "/done/a", ""}), Answer::Refuse);
    EXPECT_EQ(link.MayAct({0, true, Act::Delete, "/in/a", "", ""}), Answer::Pretend);
    EXPECT_EQ(link.MayAct({7, true, Act::Start, "/in/a", "/bin/x", ""}), Answer::Refuse) << "no answer in it";
    EXPECT_EQ(supervisor.Said(),
              "{\"ask\":\"act\",\"number\":7,\"purpose\":\"output\",\"act\":\"put\",\"file\":\"/out/.t\xEF\x9F\xBF\","
              "\"target\":\"/out/a\",\"sha256\":\"ab12\"}\n"
              "{\"ask\":\"act\",\"number\":7,\"purpose\":\"final-action\",\"act\":\"move\",\"file\":\"/in/a\","
              "\"target\":\"/done/a\",\"sha256\":\"\"}\n"
              "{\"ask\":\"act\",\"number\":0,\"purpose\":\"final-action\",\"act\":\"delete\",\"file\":\"/in/a\","
              "\"target\":\"\",\"sha256\":\"\"}\n"
              "{\"ask\":\"act\",\"number\":7,\"purpose\":\"final-action\",\"act\":\"start\",\"file\":\"/in/a\","
              "\"target\":\"/bin/x\",\"sha256\":\"\"}\n");
}

TEST(WorkerLink, ATrialDoesNothingEvenWhenItIsAllowedTo)
{
    CScriptedSupervisor supervisor(
        "{\"job\":{\"kind\":\"run\",\"dryRun\":true}}\n{\"answer\":\"go\"}\n"
        "{\"exists\":true}\n{\"exists\":false}\n{\"exists\":null}\n");
    CWorkerLink link(supervisor.WorkerInput(), supervisor.WorkerOutput());
    EXPECT_TRUE(link.Pretends());
    EXPECT_EQ(link.MayAct({1, false, Act::Put, "", "/out/a", ""}), Answer::Pretend);
    EXPECT_EQ(link.Exists("/out/a"), true);
    EXPECT_EQ(link.Exists("/in/a"), false);
    EXPECT_EQ(link.Exists("/in/b"), std::nullopt);
}

TEST(WorkerLink, ALostSupervisorRefusesEverything)
{
    const char* const endings[] = {"", "{\"answer\":", "no answer\n", "[1]\n"};
    for (const char* const ending : endings) {
        CScriptedSupervisor supervisor(ending);
        CWorkerLink link(supervisor.WorkerInput(), supervisor.WorkerOutput());
        EXPECT_FALSE(link.Broken());
        EXPECT_EQ(link.MayAct({1, false, Act::Put, "/f", "/t", ""}), Answer::Refuse) << ending;
        EXPECT_TRUE(link.Broken()) << ending;
        EXPECT_FALSE(link.NextInput()) << ending;
        EXPECT_EQ(link.Job(), nullptr) << ending;
    }
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
        link.Report("{\"plan\":{\"total\":1}}");
        link.Report("{\"a\":\n1}");
        link.Report("{\"a\":");
        EXPECT_TRUE(link.Remark("a \"b\"\nc\xFF"));
        link.RunEnds(kJobRunBroken, "why");
        link.Report("{}");
    }
    EXPECT_EQ(supervisor.Said(),
              "{\"tell\":\"starts\",\"inputs\":-1}\n"
              "{\"ask\":\"mark\",\"mark\":\"sequence-preflight-begins\"}\n"
              "{\"ask\":\"mark\",\"mark\":\"sequence-preflight-ends\"}\n"
              "{\"tell\":\"report\",\"report\":{\"plan\":{\"total\":1}}}\n"
              "{\"tell\":\"report\",\"report\":{\"a\":1}}\n"
              "{\"tell\":\"remark\",\"text\":\"a report is no JSON and is left out\"}\n"
              "{\"tell\":\"remark\",\"text\":\"a \\\"b\\\"\\nc\xEF\x9F\xBF\"}\n"
              "{\"tell\":\"ends\",\"end\":\"broken\",\"message\":\"why\"}\n"
              "{\"tell\":\"report\",\"report\":{}}\n");
}

TEST(WorkerLink, ARemarkNobodyReadsIsNotTaken)
{
    CScriptedSupervisor supervisor("");
    supervisor.StopReading();
    platform::SettleSurroundings();
    CWorkerLink link(supervisor.WorkerInput(), supervisor.WorkerOutput());
    EXPECT_FALSE(link.Remark("x"));
    EXPECT_TRUE(link.Broken());
}

TEST(WorkerLink, WritesRecordsAsTheyAreDocumented)
{
    FileRecord record;
    record.number = 7;
    record.path = "/in/\xFF.pdf";
    record.size = 4711;
    record.sha256 = "aa";
    record.outcome = kJobFileIncomplete;
    record.message = "no \"room\"";
    record.milliseconds = 12;
    record.outputs = {{"/out/a.pdf", "bb"}, {"/out/b.pdf", ""}};
    record.finalAction = {"move", "/done/a.pdf", false};
    record.signaturesBroken = true;
    EXPECT_EQ(
        RecordLine(record),
        "{\"number\":7,\"path\":\"/in/\xEF\x9F\xBF.pdf\",\"size\":4711,\"sha256\":\"aa\",\"outcome\":"
        "\"incomplete\",\"message\":\"no \\\"room\\\"\",\"milliseconds\":12,\"outputs\":[{\"path\":\"/out/a.pdf\","
        "\"sha256\":\"bb\"},{\"path\":\"/out/b.pdf\",\"sha256\":\"\"}],\"finalAction\":{\"act\":\"move\","
        "\"target\":\"/done/a.pdf\",\"state\":\"failed\"},\"signatures\":\"broken\"}");
    const char* const outcomes[] = {"saved",   "copied-unchanged", "incomplete", "failed",
                                    "skipped", "stopped",          "failed"};
    for (int outcome = 0; outcome < 7; ++outcome) {
        FileRecord plain;
        plain.outcome = outcome;
        EXPECT_EQ(RecordLine(plain), "{\"number\":0,\"path\":\"\",\"size\":0,\"sha256\":\"\",\"outcome\":\"" +
                                         std::string(outcomes[outcome]) +
                                         "\",\"message\":\"\",\"milliseconds\":0,\"outputs\":[]}");
    }
}
