#include "hostcalls/Jobs.h"

#include "hostapi/HostErrors.h"
#include "hostapi/JobsTable.h"
#include "hostcalls/HostTables.h"
#include "unit/hostcalls/HandMadeHost.h"

#include <gtest/gtest.h>

namespace {

int g_calls;  // of any function of the table
bool g_raises;

/// Stands in every slot.
ASInt32 HOSTCALL CountCall()
{
    ++g_calls;
    if (g_raises) CHandMadeHost::Raise(genErrGeneral);
    return 0;
}

void Offer(CHandMadeHost& host, ASVersion version)
{
    auto& table = host.tables[HOST_TABLE_JOBS];
    table.version = version;
    table.slots.fill(reinterpret_cast<void*>(&CountCall));
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
