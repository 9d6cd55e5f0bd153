#include "hostapi/JobsTable.h"

#include <cstddef>

#include "openhost/core/TableServers.h"
#include "openhost/core/Tables.h"
#include "openhost/documents/Documents.h"
#include "openhost/jobs/Jobs.h"
#include "openhost/jobs/RunRecord.h"

namespace openhost {

namespace {

using Act = COverseer::Act;
using Answer = COverseer::Answer;

std::string TextOf(const char* text) { return text ? text : ""; }

void RunStarts(ASInt32 inputs)
{
    Part<CRunRecord>().RunStarts();
    Part<CJobs>().Source().RunStarts(inputs);
}

void FileDone(const char* path, ASInt32 outcome, const char* message)
{
    auto& jobs = Part<CJobs>();
    const FileRecord record = jobs.Ledger().FileDone(TextOf(path), outcome, TextOf(message));
    Part<CRunRecord>().FileDone(record.path, outcome, record.message);
    jobs.Source().FileDone(record);
}

void RunEnds(ASInt32 end, const char* message)
{
    Part<CRunRecord>().RunEnds(end, TextOf(message));
    Part<CJobs>().Source().RunEnds(end, TextOf(message));
}

const char* NextJob()
{
    const std::string* const job = Part<CJobs>().Source().Job();
    return job ? job->c_str() : nullptr;
}

ASInt32 NextInput(JobInput* input)
{
    if (!input || input->size < sizeof(JobInput)) return 0;
    const JobInputFile* const next = Part<CJobs>().NextInput();
    if (!next) return 0;
    input->number = next->number;
    input->total = next->total;
    input->toDo = next->onlyFinalAction ? kJobInputFinalAction : kJobInputWhole;
    input->path = next->path.c_str();
    return 1;
}

ASInt32 MayAct(ASInt32 act, const char* file, const char* target)
{
    constexpr Act kActs[] = {Act::Put, Act::Move, Act::Delete, Act::Start};
    if (act < 0 || act >= static_cast<ASInt32>(std::size(kActs))) return kJobActRefused;
    switch (Part<CJobs>().Ledger().Ask(kActs[act], TextOf(file), TextOf(target))) {
        case Answer::Go:
            return kJobActAllowed;
        case Answer::Pretend:
            return kJobActPretended;
        case Answer::Refuse:
            break;
    }
    return kJobActRefused;
}

ASInt32 PathState(const char* path)
{
    const auto exists = Part<CJobs>().Ledger().Exists(TextOf(path));
    if (!exists) return kJobPathAsOnDisk;
    return *exists ? kJobPathThere : kJobPathGone;
}

void Report(const char* json) { Part<CJobs>().Source().Report(TextOf(json)); }
void LogMark(ASInt32 mark) { Part<CJobs>().Source().LogMark(mark); }
void FinalActionBegins() { Part<CJobs>().Ledger().FinalActionBegins(); }

const char* DocumentLoss(PDDoc document)
{
    auto& documents = Part<CDocuments>();
    return documents.Known(document) ? documents.At(document).pdf.Loss().c_str() : nullptr;
}

/// The entry of this table for a function that may throw: nothing here raises, and the answer to a failure is the one
/// that promises least, which is 0 in every slot.
template <auto Impl>
struct CQuietSlot;

template <class R, class... A, R (*Impl)(A...)>
struct CQuietSlot<Impl> {
    static R HOSTCALL Entry(A... arguments)
    {
        try {
            return Impl(arguments...);
        } catch (...) {
            static_cast<void>(RememberCurrentException());
            return R();
        }
    }
};

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
    Put<JobsRunStartsSlotProc>(table, kSlotJobsRunStarts, &CQuietSlot<&RunStarts>::Entry);
    Put<JobsFileDoneSlotProc>(table, kSlotJobsFileDone, &CQuietSlot<&FileDone>::Entry);
    Put<JobsRunEndsSlotProc>(table, kSlotJobsRunEnds, &CQuietSlot<&RunEnds>::Entry);
    Put<JobsNextJobSlotProc>(table, kSlotJobsNextJob, &CQuietSlot<&NextJob>::Entry);
    Put<JobsNextInputSlotProc>(table, kSlotJobsNextInput, &CQuietSlot<&NextInput>::Entry);
    Put<JobsMayActSlotProc>(table, kSlotJobsMayAct, &CQuietSlot<&MayAct>::Entry);
    Put<JobsPathStateSlotProc>(table, kSlotJobsPathState, &CQuietSlot<&PathState>::Entry);
    Put<JobsReportSlotProc>(table, kSlotJobsReport, &CQuietSlot<&Report>::Entry);
    Put<JobsLogMarkSlotProc>(table, kSlotJobsLogMark, &CQuietSlot<&LogMark>::Entry);
    Put<JobsFinalActionBeginsSlotProc>(table, kSlotJobsFinalActionBegins, &CQuietSlot<&FinalActionBegins>::Entry);
    Put<JobsDocumentLossSlotProc>(table, kSlotJobsDocumentLoss, &CQuietSlot<&DocumentLoss>::Entry);
    auto server = std::make_unique<CTableServer>();
    server->name = HOST_TABLE_JOBS;
    server->table = table;
    servers.servers.Add(std::move(server));
}

}  // namespace openhost
