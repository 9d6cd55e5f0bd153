#include "hostcalls/HostTables.h"

#include "unit/hostcalls/HandMadeHost.h"

#include <gtest/gtest.h>

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
    }
}

TEST(HostTables, ASecondImportKeepsNothingOfTheFirst)
{
    CHostTables tables;
    {
        CHandMadeHost host;
        host.tables["Forms"].version = 0x00010002;
        ASSERT_TRUE(tables.Import(host.Core()));
        tables.ImportOptional();
    }
    CHandMadeHost host;
    ASSERT_TRUE(tables.Import(host.Core()));
    EXPECT_FALSE(tables.Has(HostTable::Forms));
}
