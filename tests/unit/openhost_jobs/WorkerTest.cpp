#include <gtest/gtest.h>

#include <functional>

#include "base/Overseer.h"
#include "openhost/jobs/RecordFile.h"
#include "openhost/program/OpenHost.h"
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

void Done(const char* path, int outcome) { Jobs<JobsFileDoneSlotProc>(kSlotJobsFileDone)(path, outcome, nullptr); }

ASInt32 MayAct(int act) { return Jobs<JobsMayActSlotProc>(kSlotJobsMayAct)(act, "/f", "/t"); }

}  // namespace

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
