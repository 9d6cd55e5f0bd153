#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "Pipes.h"
#include "base/Overseer.h"
#include "openhost/jobs/RecordFile.h"
#include "openhost/jobs/WorkerLink.h"
#include "openhost/program/OpenHost.h"
#include "platform/Files.h"
#include "support/InProcessPlugIn.h"
#include "support/TemporaryFolder.h"

using namespace in_process;
using namespace openhost;

namespace {

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

JobInput Next(ASInt32 expected = 1)
{
    JobInput input = {};
    input.size = sizeof input;
    EXPECT_EQ(Jobs<JobsNextInputSlotProc>(kSlotJobsNextInput)(&input), expected);
    return input;
}

void Done(const char* path, int outcome) { Jobs<JobsFileDoneSlotProc>(kSlotJobsFileDone)(path, outcome, nullptr); }

/// As it stands in JSON.
std::string Quoted(const std::string& path)
{
    std::string quoted = "\"";
    for (const char letter : path) quoted += letter == '\\' ? "\\\\" : std::string(1, letter);
    return quoted + '"';
}

ASInt32 MayAct(int act, const std::string& file, const char* target)
{
    return Jobs<JobsMayActSlotProc>(kSlotJobsMayAct)(act, file.c_str(), target);
}

}  // namespace

TEST(Worker, OneFileFromQuestionToRecord)
{
    const CTemporaryFolder folder;
    const std::string input = folder.Write("a.pdf", "one");
    CScriptedSupervisor supervisor(
        "{\"job\":{\"kind\":\"run\"}}\n{\"input\":{\"number\":3,\"total\":3,\"path\":" + Quoted(input) +
        ",\"toDo\":\"whole\"}}\n{\"answer\":\"refuse\"}\n{\"answer\":\"go\"}\n"
        "{\"input\":null}\n");
    RunHost(std::make_shared<CWorkerLink>(supervisor.WorkerInput(), supervisor.WorkerOutput()), [&] {
        EXPECT_STREQ(Jobs<JobsNextJobSlotProc>(kSlotJobsNextJob)(), "{\"kind\":\"run\"}");
        const JobInput next = Next();
        EXPECT_EQ(next.number, 3);
        EXPECT_EQ(next.total, 3);
        EXPECT_EQ(next.toDo, kJobInputWhole);
        EXPECT_EQ(next.path, input);
        // An act of the host itself meets those of the plug-in.
        ASSERT_TRUE(Overseer());
        EXPECT_EQ(Overseer()->Ask(COverseer::Act::Delete, input, ""), COverseer::Answer::Refuse);
        Jobs<JobsFinalActionBeginsSlotProc>(kSlotJobsFinalActionBegins)();
        EXPECT_EQ(MayAct(kJobActDelete, input, nullptr), kJobActAllowed);
        std::filesystem::remove(input);
        EXPECT_EQ(Jobs<JobsPathStateSlotProc>(kSlotJobsPathState)(input.c_str()), kJobPathAsOnDisk);
        Done(next.path, kJobFileSaved);
        Next(0);
    });
    const std::string hash = "7692c3ad3540bb803c020b3aee66cd8887123234ea0c6e7143c0add73ff431ed";
    const auto act = [&](const std::string& purpose) {
        return "{\"ask\":\"act\",\"number\":3,\"purpose\":\"" + purpose +
               "\",\"act\":\"delete\",\"file\":" + Quoted(input) + ",\"target\":\"\",\"sha256\":\"" + hash + "\"}\n";
    };
    EXPECT_EQ(
        supervisor.Said(),
        "{\"ask\":\"job\"}\n{\"ask\":\"input\"}\n" + act("output") + act("final-action") +
            "{\"tell\":\"file\",\"record\":{\"number\":3,\"path\":" + Quoted(input) + ",\"size\":3,\"sha256\":\"" +
            hash +
            "\",\"outcome\":\"saved\",\"message\":\"\",\"milliseconds\":0,\"outputs\":[],\"finalAction\":{\"act\":"
            "\"delete\",\"target\":\"\",\"state\":\"done\"}}}\n{\"ask\":\"input\"}\n");
}

TEST(Worker, WithoutAJobEverythingIsAllowed)
{
    RunHost(nullptr, [] {
        EXPECT_EQ(Jobs<JobsNextJobSlotProc>(kSlotJobsNextJob)(), nullptr);
        Next(0);
        EXPECT_EQ(MayAct(kJobActPut, "/f", "/t"), kJobActAllowed);
        EXPECT_EQ(MayAct(99, "/f", "/t"), kJobActRefused) << "an act of a later table";
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
        EXPECT_EQ(FileBytes(path),
                  "{\"number\":1,\"path\":" + Quoted(input) +
                      ",\"size\":3,\"sha256\":\"7692c3ad3540bb803c020b3aee66cd8887123234ea0c6e7143c0add73ff431ed\","
                      "\"outcome\":\"failed\",\"message\":\"\",\"milliseconds\":0,\"outputs\":[]}\n");
    });
    EXPECT_TRUE(CRecordFile::Create(path, problem)) << "a whole record is replaced, too";
    for (const std::string& place : {folder / "no/such/folder", folder / "", input}) {
        EXPECT_FALSE(CRecordFile::Create(place, problem));
        EXPECT_NE(problem, "") << place;
    }
    EXPECT_EQ(FileBytes(input), "one");
}
