#include "openhost/core/TableServers.h"
#include "openhost/core/Tables.h"
#include "openhost/program/RunRecord.h"

namespace openhost {

namespace {

std::string_view TextOf(const char* text) { return text ? text : ""; }

void RunStarts(ASInt32) { Part<CRunRecord>().RunStarts(); }

void FileDone(const char* path, ASInt32 outcome, const char* message)
{
    Part<CRunRecord>().FileDone(TextOf(path), outcome, TextOf(message));
}

void RunEnds(ASInt32 end, const char* message) { Part<CRunRecord>().RunEnds(end, TextOf(message)); }

template <class SlotProc>
void Put(HFT table, int slot, SlotProc entry)
{
    table[slot] = reinterpret_cast<HFTEntry>(entry);
}

}  // namespace

void OfferJobsTable()
{
    auto& servers = Part<CTableServers>();
    const HFT table = servers.NewTable(kTableJobsSelectors, kTableJobsVersion);
    Put<JobsRunStartsSlotProc>(table, kSlotJobsRunStarts, &CSlot<&RunStarts>::Entry);
    Put<JobsFileDoneSlotProc>(table, kSlotJobsFileDone, &CSlot<&FileDone>::Entry);
    Put<JobsRunEndsSlotProc>(table, kSlotJobsRunEnds, &CSlot<&RunEnds>::Entry);
    auto server = std::make_unique<CTableServer>();
    server->name = HOST_TABLE_JOBS;
    server->table = table;
    servers.servers.Add(std::move(server));
}

}  // namespace openhost
