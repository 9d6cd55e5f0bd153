#include <gtest/gtest.h>

#include "hostapi/HostErrors.h"
#include "hostapi/JobsTable.h"
#include "hostcalls/HostTables.h"
#include "hostcalls/Jobs.h"
#include "unit/hostcalls/HandMadeHost.h"

// Which tables are wanted, in which order and versions: tests/loader asks the built plug-in.

TEST(HostTables, AHostThatRaisesWhenAskedForOneIsDeclined)
{
    for (const char* name : {"AcroSupport", "Core", "PDModel", "PDMetadata"}) {
        CHandMadeHost host;
        host.tables[name].raises = true;
        EXPECT_FALSE(CHostTables().Import(host.Core())) << name;
        EXPECT_EQ(host.Depth(), 0) << name;
    }
}

TEST(HostTables, OptionalOnesMayBeMissingAndMayHaveVersionZero)
{
    const struct {
        const char* name;
        HostTable table;
        ASVersion offered;
        bool present;
    } rows[] = {
        {"Forms", HostTable::Forms, 0x00010001, false},
        {"Forms", HostTable::Forms, 0x00010002, true},
        {"Catalog", HostTable::Catalog, 0, true},
        {"FerruleJobs", HostTable::FerruleJobs, 0x00010000, true},
        {"FerruleJobs", HostTable::FerruleJobs, 0xFFFF, false},
    };
    for (const auto& row : rows) {
        CHandMadeHost host;
        host.tables[row.name].version = row.offered;
        CHostTables tables;
        ASSERT_TRUE(tables.Import(host.Core()));
        EXPECT_FALSE(tables.Has(row.table)) << row.name;  // not before its time
        tables.ImportOptional();
        for (const HostTable other : {HostTable::Forms, HostTable::Catalog, HostTable::FerruleJobs})
            EXPECT_EQ(tables.Has(other), other == row.table && row.present) << row.name;
        ASSERT_TRUE(tables.Import(host.Core()));
        EXPECT_FALSE(tables.Has(row.table)) << "a second import keeps nothing of the first";
    }
}

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

}  // namespace

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
