#include "hostcalls/Jobs.h"

#include "hostapi/HostErrors.h"
#include "hostapi/JobsTable.h"
#include "hostcalls/HostTables.h"
#include "unit/hostcalls/HandMadeHost.h"

#include <gtest/gtest.h>

namespace {

int g_calls;  // of any function of the table
bool g_raises;

void CountCall()
{
    ++g_calls;
    if (g_raises) CHandMadeHost::Raise(genErrGeneral);
}

const char* HOSTCALL NextJob()
{
    CountCall();
    return "{}";
}
ASInt32 HOSTCALL NextInput(JobInput* input)
{
    CountCall();
    *input = {input->size, 3, 9, kJobInputFinalAction, "in/a.pdf"};
    return 1;
}
ASInt32 HOSTCALL MayAct(ASInt32, const char*, const char*)
{
    CountCall();
    return kJobActPretended;
}
ASInt32 HOSTCALL PathState(const char*)
{
    CountCall();
    return kJobPathGone;
}
void HOSTCALL Note() { CountCall(); }

void Offer(CHandMadeHost& host, ASVersion version)
{
    auto& table = host.tables[HOST_TABLE_JOBS];
    table.version = version;
    table.slots[kSlotJobsNextJob] = reinterpret_cast<void*>(&NextJob);
    table.slots[kSlotJobsNextInput] = reinterpret_cast<void*>(&NextInput);
    table.slots[kSlotJobsMayAct] = reinterpret_cast<void*>(&MayAct);
    table.slots[kSlotJobsPathState] = reinterpret_cast<void*>(&PathState);
    table.slots[kSlotJobsFinalActionBegins] = reinterpret_cast<void*>(&Note);
    g_calls = 0;
    g_raises = false;
    ASSERT_TRUE(HostTables().Import(host.Core()));
    HostTables().ImportOptional();
}

TEST(Jobs, AnOlderTableIsNotAskedForWhatItEndsBefore)
{
    CHandMadeHost host;
    Offer(host, kTableJobsFirstVersion);
    EXPECT_TRUE(JobsTablePresent());
    EXPECT_FALSE(JobText());
    EXPECT_FALSE(NextJobInput());
    EXPECT_EQ(JobMayAct(kJobActDelete, "a", ""), kJobActAllowed);
    EXPECT_EQ(JobPathState("a"), kJobPathAsOnDisk);
    JobFinalActionBegins();
    EXPECT_EQ(g_calls, 0);
}

TEST(Jobs, AHostThatCannotBeAskedAllowsNothing)
{
    CHandMadeHost host;
    Offer(host, kTableJobsVersion);
    g_raises = true;
    EXPECT_EQ(JobMayAct(kJobActDelete, "a", ""), kJobActRefused);
    EXPECT_FALSE(NextJobInput());
    EXPECT_FALSE(JobText());
    EXPECT_EQ(host.Depth(), 0);
}

}  // namespace
