#include "hostcalls/HostTables.h"

#include "unit/hostcalls/HandMadeHost.h"

#include <gtest/gtest.h>

namespace {

struct RequiredTable {
    const char* name;
    HostTable table;
    ASVersion least;
};

const RequiredTable kRequired[] = {
    {"AcroSupport", HostTable::AcroSupport, 0x00080000},
    {"Core", HostTable::Core, 0x00050000},
    {"Cos", HostTable::Cos, 0x00060000},
    {"PDModel", HostTable::PDModel, 0x00060000},
    {"PDFEditWrite", HostTable::PDFEditWrite, 0x00060000},
    {"PDFEditRead", HostTable::PDFEditRead, 0x00060000},
    {"PDSysFont", HostTable::PDSysFont, 0x00040000},
    {"PagePDEContent", HostTable::PagePDEContent, 0x00060000},
    {"AcroView", HostTable::AcroView, 0x00060000},
    {"PDSWrite", HostTable::PDSWrite, 0x00060000},
    {"PDSRead", HostTable::PDSRead, 0x00060000},
    {"Win", HostTable::Win, 0x00050000},
    {"ASExtra", HostTable::ASExtra, 0x00060000},
    {"PDMetadata", HostTable::PDMetadata, 0x00060000},
};

}  // namespace

TEST(HostTables, AreFetchedInTheirOrderWithTheirOwnVersions)
{
    CHandMadeHost host;
    host.tables["Cos"].version = 0x00090001;
    CHostTables tables;
    ASSERT_TRUE(tables.Import(host.Core()));
    std::vector<std::string> names;
    for (const auto& row : kRequired) {
        names.push_back(row.name);
        EXPECT_EQ(tables.Table(row.table), host.tables[row.name].slots.data()) << row.name;
        EXPECT_EQ(tables.Version(row.table), host.tables[row.name].version) << row.name;
    }
    EXPECT_EQ(host.asked, names);
    EXPECT_EQ(host.Depth(), 0);
}

TEST(HostTables, EachRequiredOneMustBeThereAndNewEnough)
{
    for (const auto& row : kRequired) {
        const struct {
            const char* what;
            void (*change)(CHandMadeHost::Table&, ASVersion);
            bool loads;
        } cases[] = {
            {"just new enough", [](auto& table, ASVersion least) { table.version = least; }, true},
            {"one too old", [](auto& table, ASVersion least) { table.version = least - 1; }, false},
            {"asking raises", [](auto& table, ASVersion) { table.raises = true; }, false},
        };
        for (const auto& test : cases) {
            CHandMadeHost host;
            test.change(host.tables[row.name], row.least);
            EXPECT_EQ(CHostTables().Import(host.Core()), test.loads) << row.name << ": " << test.what;
            EXPECT_EQ(host.Depth(), 0) << row.name << ": " << test.what;
        }
        CHandMadeHost host;
        HFT core = host.Core();
        const auto keptForItsSlots = host.tables.extract(row.name);
        EXPECT_FALSE(CHostTables().Import(core)) << row.name << " is missing";
    }
}

TEST(HostTables, AnUntoldVersionIsProbedFromTheNewestKnownOneDown)
{
    const struct {
        const char* name;
        HostTable table;
        ASVersion real;
        bool loads;
        ASVersion found;
    } rows[] = {
        {"Core", HostTable::Core, 0x00050000, true, 0x00050000},
        {"Core", HostTable::Core, 0x00070000, true, 0x00050001},
        {"PDSysFont", HostTable::PDSysFont, 0x00040000, true, 0x00040000},
        {"PDSysFont", HostTable::PDSysFont, 0x00040006, true, 0x00040005},
        {"PDSysFont", HostTable::PDSysFont, 0x0003FFFF, false, 0},
        {"Cos", HostTable::Cos, 0x00090000, false, 0},  // every probed version is older than the one wanted
    };
    for (const auto& row : rows) {
        CHandMadeHost host;
        host.tables[row.name].version = row.real;
        host.tables[row.name].tellsVersion = false;
        CHostTables tables;
        EXPECT_EQ(tables.Import(host.Core()), row.loads) << row.name << ' ' << std::hex << row.real;
        EXPECT_EQ(tables.Version(row.table), row.found) << row.name << ' ' << std::hex << row.real;
        EXPECT_EQ(tables.Has(row.table), row.loads) << row.name << ' ' << std::hex << row.real;
    }
}

TEST(HostTables, ASupportTableBelowVersionSixIsNeverAskedForVersions)
{
    CHandMadeHost host;
    host.tables["AcroSupport"].version = 0x0005FFFF;
    host.tables["AcroSupport"].slots.fill(nullptr);  // a call into it would end the test
    CHostTables tables;
    EXPECT_FALSE(tables.Import(host.Core()));
    EXPECT_FALSE(tables.Has(HostTable::AcroSupport));
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
