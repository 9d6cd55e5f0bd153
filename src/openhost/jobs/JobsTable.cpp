#include "hostapi/JobsTable.h"

#include <cstddef>
#include <utility>

#include "openhost/core/Tables.h"
#include "openhost/documents/Documents.h"
#include "openhost/jobs/Jobs.h"
#include "openhost/jobs/RunRecord.h"

namespace openhost {

static_assert(static_cast<int>(Act::Put) == kJobActPut && static_cast<int>(Act::Move) == kJobActMove &&
              static_cast<int>(Act::Delete) == kJobActDelete && static_cast<int>(Act::Start) == kJobActStart);
static_assert(static_cast<int>(LogPlace::SequencePreflightBegins) == kJobMarkSequencePreflightBegins &&
              static_cast<int>(LogPlace::SequencePreflightEnds) == kJobMarkSequencePreflightEnds &&
              static_cast<int>(LogPlace::InputsCounted) == kJobMarkInputsCounted);

namespace {

using Answer = COverseer::Answer;

std::string TextOf(const char* text) { return text ? text : ""; }

void RunStarts(ASInt32 inputs)
{
    Part<CRunRecord>().RunStarts();
    Part<CJobs>().Source().RunStarts(inputs);
}

/// What the plug-in's number means; `fallback` when it is none.
template <class Enum>
Enum FromNumber(ASInt32 number, Enum last, Enum fallback)
{
    return number >= 0 && number <= static_cast<ASInt32>(last) ? static_cast<Enum>(number) : fallback;
}

void FileDone(const char* path, ASInt32 number, const char* message)
{
    auto& jobs = Part<CJobs>();
    const FileOutcome outcome = FromNumber(number, FileOutcome::Stopped, FileOutcome::Failed);
    FileRecord record = jobs.Ledger().FileDone(TextOf(path), outcome, TextOf(message));
    Part<CRunRecord>().FileDone(record.path, outcome, TextOf(message));
    record.findings = std::exchange(jobs.findings, {});
    jobs.Source().FileDone(record);
}

/// What several steps have found becomes one array.
void FileFound(const char* json)
{
    std::string& findings = Part<CJobs>().findings;
    const std::string more = TextOf(json);
    if (findings.size() > 2 && more.size() > 2) {
        findings.back() = ',';
        findings += more.substr(1);
    } else if (more.size() > 2 || findings.empty()) {
        findings = more;
    }
}

void RunEnds(ASInt32 number, const char* message)
{
    const RunEnd end = FromNumber(number, RunEnd::Broken, RunEnd::Broken);
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
    input->toDo = next->toDo == ToDo::FinalAction ? kJobInputFinalAction : kJobInputWhole;
    input->path = next->path.c_str();
    return 1;
}

ASInt32 MayAct(ASInt32 act, const char* file, const char* target)
{
    if (act < 0 || act > static_cast<ASInt32>(Act::Start)) return kJobActRefused;
    switch (Part<CJobs>().Ledger().Ask(static_cast<Act>(act), TextOf(file), TextOf(target))) {
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

void LogMark(ASInt32 mark)
{
    if (mark >= 0 && mark <= static_cast<ASInt32>(LogPlace::InputsCounted))
        Part<CJobs>().Source().LogMark(static_cast<LogPlace>(mark));
}

void FinalActionBegins() { Part<CJobs>().Ledger().FinalActionBegins(); }

void Copying(ASInt32 begins) { Part<CJobs>().Ledger().Copying(begins != 0); }

const char* DocumentLoss(PDDoc document)
{
    auto& documents = Part<CDocuments>();
    if (!documents.Known(document)) return nullptr;
    return Translated([&] { return documents.At(document).pdf.Loss().c_str(); });
}

ASInt32 DocumentSigned(PDDoc document)
{
    auto& documents = Part<CDocuments>();
    if (!documents.Known(document)) return -1;
    try {
        CPdfDocument& pdf = documents.At(document).pdf;
        return Translated([&] { return !pdf.IsSigned() ? 0 : pdf.IsCertified() ? 2 : 1; });
    } catch (...) {
        return -1;  // 0 would promise something
    }
}

void NextSaveIsNew(PDDoc document)
{
    auto& documents = Part<CDocuments>();
    if (documents.Known(document)) documents.At(document).nextSaveIsNew = true;
}

void NextSaveAppends(PDDoc document, ASInt32 only)
{
    auto& documents = Part<CDocuments>();
    if (!documents.Known(document)) return;
    documents.At(document).nextSaveAppends = only != 0 ? Appending::Only : Appending::WherePossible;
}

void NextSaveForgets(PDDoc document)
{
    auto& documents = Part<CDocuments>();
    if (documents.Known(document)) documents.At(document).nextSaveForgets = true;
}

const char* AppendObstacle(PDDoc document)
{
    auto& documents = Part<CDocuments>();
    if (!documents.Known(document)) return nullptr;
    static std::string obstacle;
    obstacle = Translated([&] { return documents.At(document).pdf.AppendObstacle(); });
    return obstacle.c_str();
}

const char* WrittenWhole(PDDoc document)
{
    auto& documents = Part<CDocuments>();
    if (!documents.Known(document)) return nullptr;
    const auto& reason = documents.At(document).pdf.WrittenWhole();
    return reason ? reason->c_str() : nullptr;
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
    Put<JobsFileFoundSlotProc>(table, kSlotJobsFileFound, &CQuietSlot<&FileFound>::Entry);
    Put<JobsNextSaveIsNewSlotProc>(table, kSlotJobsNextSaveIsNew, &CQuietSlot<&NextSaveIsNew>::Entry);
    Put<JobsCopyingSlotProc>(table, kSlotJobsCopying, &CQuietSlot<&Copying>::Entry);
    Put<JobsDocumentSignedSlotProc>(table, kSlotJobsDocumentSigned, &CQuietSlot<&DocumentSigned>::Entry);
    Put<JobsNextSaveAppendsSlotProc>(table, kSlotJobsNextSaveAppends, &CQuietSlot<&NextSaveAppends>::Entry);
    Put<JobsAppendObstacleSlotProc>(table, kSlotJobsAppendObstacle, &CQuietSlot<&AppendObstacle>::Entry);
    Put<JobsWrittenWholeSlotProc>(table, kSlotJobsWrittenWhole, &CQuietSlot<&WrittenWhole>::Entry);
    Put<JobsNextSaveForgetsSlotProc>(table, kSlotJobsNextSaveForgets, &CQuietSlot<&NextSaveForgets>::Entry);
    auto server = std::make_unique<CTableServer>();
    server->name = HOST_TABLE_JOBS;
    server->table = table;
    servers.servers.Add(std::move(server));
}

}  // namespace openhost
