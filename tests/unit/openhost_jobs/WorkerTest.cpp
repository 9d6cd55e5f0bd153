// A worker as its supervisor sees it: its lines, what it asks and tells, and the host around it.
#include <fcntl.h>

#include <functional>

#include <gtest/gtest.h>

#include "base/Overseer.h"
#include "openhost/jobs/RunRecord.h"
#include "openhost/jobs/WorkerLink.h"
#include "openhost/program/OpenHost.h"
#include "platform/AtomicFile.h"
#include "platform/ChildProcess.h"
#include "support/InProcessPlugIn.h"
#include "support/TemporaryFolder.h"

#ifndef _WIN32
constexpr int O_BINARY = 0;  // bytes are bytes
#endif

using namespace in_process;
using namespace openhost;

namespace {

using Answer = COverseer::Answer;

/// A link to a supervisor whose answers were written beforehand.
struct Linked {
    explicit Linked(std::string_view answers) : answered(folder.Write("answers", answers)) {}
    std::string Said() const { return FileBytes(said); }

    const CTemporaryFolder folder;
    const std::string answered, said = folder.Write("said", "");
    CWorkerLink link{open(answered.c_str(), O_RDONLY | O_BINARY), open(said.c_str(), O_WRONLY | O_BINARY)};
};

std::string Asked(const char* what) { return std::string("{\"ask\":\"") + what + "\"}\n"; }

void RunHost(std::shared_ptr<CJobSource> source, std::function<void()> work)
{
    g_initialise = std::move(work);
    OpenHostOptions options;
    options.plugIns = {{"in-process", &Entry}};
    options.jobs = std::move(source);
    options.sayRun = false;
    options.clockMilliseconds = [] { return 5; };
    COpenHost host(std::move(options));
    EXPECT_TRUE(host.StartUp());
}

void Done(const char* path, int outcome) { Jobs<JobsFileDoneSlotProc>(kSlotJobsFileDone)(path, outcome, nullptr); }

ASInt32 MayAct(int act) { return Jobs<JobsMayActSlotProc>(kSlotJobsMayAct)(act, "/f", "/t"); }

}  // namespace

TEST(LineStream, NothingElseGetsBetweenTheLines)
{
    auto child = platform::CChildProcess::Start({.program = LINE_PROGRAM});
    ASSERT_TRUE(child);
    EXPECT_TRUE(child->Send("first\r"));
    EXPECT_TRUE(child->Send("\xC3\xBC"));
    child->CloseInput();
    std::string lines, errors;
    for (bool ended = false; !ended;) {
        const auto news = platform::CChildWatch().Wait({&*child}, 30'000);
        ASSERT_TRUE(news);
        ended = news->event == platform::ChildEvent::Ended;
        if (!ended) (news->event == platform::ChildEvent::Line ? lines : errors) += news->text + '|';
    }
    EXPECT_EQ(child->Ending().exitCode, 0) << "the step that failed";
    EXPECT_EQ(lines, "a line|");
    std::erase(errors, '\r');
    EXPECT_EQ(errors, "stray by the library|stray by the system|stray by a program|");
}

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
    EXPECT_EQ(worker.Said(), Asked("job") + Asked("input") + Asked("input") + Asked("input"));
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
    EXPECT_EQ(worker.Said(),
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
    const CTemporaryFolder folder;
    const std::string nothing = folder.Write("nothing", "");
    CWorkerLink unread(open(nothing.c_str(), O_RDONLY), open(nothing.c_str(), O_RDONLY));
    EXPECT_FALSE(unread.Remark("x")) << "nobody takes it";
    EXPECT_TRUE(unread.Broken());
}

TEST(WorkerLink, TellsWhatHappensAndKeepsEachInOneLine)
{
    Linked worker("{}\n{}\n{}\n");
    CWorkerLink& link = worker.link;
    link.RunStarts(-1);
    for (const LogPlace place :
         {LogPlace::SequencePreflightBegins, LogPlace::SequencePreflightEnds, LogPlace::InputsCounted})
        link.LogMark(place);
    for (const char* const report : {R"({"plan":{"total":1}})", "{\"a\":\n1}", "{\"a\":"}) link.Report(report);
    EXPECT_TRUE(link.Remark("a \"b\"\nc\xFF"));
    link.RunEnds(RunEnd::Broken, "why");
    EXPECT_EQ(worker.Said(), R"({"tell":"starts","inputs":-1}
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
}

TEST(Worker, WithoutAJobEverythingIsAllowed)
{
    RunHost(nullptr, [] {
        EXPECT_EQ(Jobs<JobsNextJobSlotProc>(kSlotJobsNextJob)(), nullptr);
        JobInput input = {};
        input.size = sizeof input;
        EXPECT_EQ(Jobs<JobsNextInputSlotProc>(kSlotJobsNextInput)(&input), 0);
        EXPECT_EQ(MayAct(kJobActPut), kJobActAllowed);
        EXPECT_EQ(MayAct(99), kJobActRefused) << "an act of a later table";
        EXPECT_EQ(Jobs<JobsPathStateSlotProc>(kSlotJobsPathState)("/t"), kJobPathAsOnDisk);
        Jobs<JobsReportSlotProc>(kSlotJobsReport)("{}");
        Jobs<JobsLogMarkSlotProc>(kSlotJobsLogMark)(0);
        Done("/in/a", kJobFileFailed);
    });
    EXPECT_EQ(Overseer(), nullptr) << "the host's watch ends with the host";
}

TEST(Worker, ARecordFileGetsALineForEachFileAtOnce)
{
    const CTemporaryFolder folder;
    const std::string input = folder.Write("a.pdf", "one"), path = folder.Write("record", "{\"number\":1,\"pa");
    std::string problem;
    auto file = CRecordFile::Create(path, problem);
    ASSERT_TRUE(file);
    RunHost(file, [&] {
        Done(input.c_str(), kJobFileFailed);
        const std::string line = FileBytes(path);
        EXPECT_EQ(line.rfind("{\"number\":1,\"path\":", 0), 0u) << line;
        EXPECT_NE(line.find("a.pdf\",\"size\":3,\"sha256\":\"7692c3ad"), std::string::npos) << line;
        EXPECT_EQ(line.find('\n'), line.size() - 1) << "one whole line";
    });
    EXPECT_TRUE(CRecordFile::Create(path, problem)) << "a whole record is replaced, too";
    for (const std::string& place : {folder / "no/such/folder", folder / "", input}) {
        EXPECT_FALSE(CRecordFile::Create(place, problem));
        EXPECT_NE(problem, "") << place;
    }
    EXPECT_EQ(FileBytes(input), "one");
}
