#include "hostcalls/HostTables.h"

#include "hostapi/HostInterface.h"
#include "hostapi/IndexTable.h"
#include "hostapi/JobsTable.h"
#include "hostcalls/HostFrame.h"

namespace {

constexpr ASVersion kUnknownVersion = 0xFFFFFFFF;
constexpr ASVersion kReportsVersions = 0x00060000;  // from here on the support table tells the versions of tables
constexpr ASVersion kSupportRequired = 0x00080000;

/// For hosts that cannot tell a table's version, newest first.
constexpr ASVersion kProbedVersions[] = {0x00050001, 0x00050000, 0x00040005, 0x00040000,
                                         0x00020003, 0x00020002, 0x00020001};

struct TableRow {
    HostTable table;
    const char* name;
    ASVersion required;
};

constexpr TableRow kRequiredTables[] = {
    {HostTable::Core, HOST_TABLE_CORE, 0x00050000},
    {HostTable::Cos, HOST_TABLE_COS, 0x00060000},
    {HostTable::PDModel, HOST_TABLE_PDMODEL, 0x00060000},
    {HostTable::PDFEditWrite, HOST_TABLE_PDFEDITWRITE, 0x00060000},
    {HostTable::PDFEditRead, HOST_TABLE_PDFEDITREAD, 0x00060000},
    {HostTable::PDSysFont, HOST_TABLE_PDSYSFONT, 0x00040000},
    {HostTable::PagePDEContent, HOST_TABLE_PAGEPDECONTENT, 0x00060000},
    {HostTable::AcroView, HOST_TABLE_ACROVIEW, 0x00060000},
    {HostTable::PDSWrite, HOST_TABLE_PDSWRITE, 0x00060000},
    {HostTable::PDSRead, HOST_TABLE_PDSREAD, 0x00060000},
    {HostTable::Win, HOST_TABLE_WIN, 0x00050000},
    {HostTable::ASExtra, HOST_TABLE_ASEXTRA, 0x00060000},
    {HostTable::PDMetadata, HOST_TABLE_PDMETADATA, 0x00060000},
};

constexpr TableRow kOptionalTables[] = {
    {HostTable::Forms, HOST_TABLE_FORMS, 0x00010002},
    {HostTable::Catalog, HOST_TABLE_CATALOG, 0},
    {HostTable::FerruleJobs, HOST_TABLE_JOBS, kTableJobsFirstVersion},
    {HostTable::FerruleIndex, HOST_TABLE_INDEX, kTableIndexVersion},
};

struct TableRequest {
    HFT core;
    const char* name;
    ASVersion version;
    HFT found;
};

void AskForTable(void* context)
{
    auto& request = *static_cast<TableRequest*>(context);
    const auto atomFromString = reinterpret_cast<ASAtomFromStringSlotProc>(request.core[kSlotASAtomFromString]);
    const auto getTable = reinterpret_cast<ASExtensionMgrGetHFTSlotProc>(request.core[kSlotASExtensionMgrGetHFT]);
    request.found = getTable(atomFromString(request.name), request.version);
}

struct VersionRequest {
    HFT support;
    HFT table;
    ASVersion version;
};

void AskForVersion(void* context)
{
    auto& request = *static_cast<VersionRequest*>(context);
    request.version = reinterpret_cast<HFTGetVersionSlotProc>(request.support[kSlotHFTGetVersion])(request.table);
}

}  // namespace

CHostTables& HostTables()
{
    static CHostTables tables;
    return tables;
}

bool CHostTables::Import(HFT core)
{
    *this = CHostTables{};
    At(HostTable::Core).table = core;  // for the calls of the import; replaced by the one fetched by name
    if (HFT support = Ask(HOST_TABLE_ACROSUPPORT, kReportsVersions)) {
        At(HostTable::AcroSupport).table = support;
        const ASVersion version = OwnVersion(support, support);
        m_supportVersion = version != kUnknownVersion ? version : 0;
    }
    if (!ImportOne(HostTable::AcroSupport, HOST_TABLE_ACROSUPPORT, kSupportRequired)) return false;
    for (const TableRow& row : kRequiredTables)
        if (!ImportOne(row.table, row.name, row.required)) return false;
    return true;
}

void CHostTables::ImportOptional()
{
    // The answer says nothing here: a table whose own version is 0 is there all the same.
    for (const TableRow& row : kOptionalTables) (void)ImportOne(row.table, row.name, row.required);
}

bool CHostTables::ImportOne(HostTable table, const char* name, ASVersion required)
{
    const Entry found = Find(name, required);
    At(table) = found;
    return found.version != 0;
}

CHostTables::Entry CHostTables::Find(const char* name, ASVersion required) const
{
    if (m_supportVersion >= kReportsVersions) {
        if (HFT table = Ask(name, required)) {
            const ASVersion version = OwnVersion(Table(HostTable::AcroSupport), table);
            if (version != kUnknownVersion) return {table, version};
        }
    }
    for (const ASVersion version : kProbedVersions) {
        if (version < required) break;
        if (HFT table = Ask(name, version)) return {table, version};
    }
    return {};
}

HFT CHostTables::Ask(const char* name, ASVersion version) const
{
    HFT core = Table(HostTable::Core);
    TableRequest request{core, name, version, nullptr};
    return hostcalls::RunInFrame(core, &AskForTable, &request) == 0 ? request.found : nullptr;
}

ASVersion CHostTables::OwnVersion(HFT support, HFT table) const
{
    VersionRequest request{support, table, kUnknownVersion};
    const ASErrorCode code = hostcalls::RunInFrame(Table(HostTable::Core), &AskForVersion, &request);
    return code == 0 ? request.version : kUnknownVersion;
}

void* hostcalls::SlotEntry(HostTable table, int slot, const char* function)
{
    HFT entries = HostTables().Table(table);
    if (entries != nullptr && entries[slot] != nullptr) return entries[slot];
    throw CHostException({genErrMethodNotImplemented, std::string("The host does not offer ") + function});
}
