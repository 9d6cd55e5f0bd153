#include "supervisor/ManifestRun.h"

#include <algorithm>
#include <set>
#include <utility>

#include "protocol/Json.h"
#include "search/SearchReport.h"
#include "supervisor/resume/CleanUp.h"
#include "supervisor/resume/PlanChanges.h"
#include "supervisor/undo/Undo.h"

namespace {

/// Spreads neighbouring group numbers over the shards.
std::uint64_t Scrambled(std::uint64_t value)
{
    value ^= value >> 31;
    value *= 0x9E3779B97F4A7C15u;
    return value ^ value >> 29;
}

}  // namespace

bool IsInShard(const PlannedFile& file, int shard, int shards)
{
    const auto count = static_cast<std::uint64_t>(shards);
    const std::uint64_t key = file.group == 0 ? static_cast<std::uint64_t>(file.number) : Scrambled(file.group);
    return key % count == static_cast<std::uint64_t>(shard - 1);
}

CManifestRun::CManifestRun(const EngineOptions& engine, const CWorkerStarter& starter, ManifestRunOptions options,
                           CRunObserver& observer)
    : m_engine(engine), m_starter(starter), m_options(std::move(options)), m_observer(observer), m_record(observer)
{
}

RunResult CManifestRun::Run()
{
    if (Load() && ReadEarlier() && CountFiles() && PrepareKeeping() && OpenOutputs()) Process();
    m_result.plan = m_options.plan;
    if (!m_problem.empty()) {
        m_result.exit = ExitClass::Broken;
        m_result.message = m_problem;
    }
    return std::move(m_result);
}

// ---- before the first file

bool CManifestRun::Load()
{
    auto header = m_manifest.Open(m_options.manifestPath);
    if (!header) return Unusable(header.Error(), m_options.manifestWayOut);
    m_header = std::move(*header);
    if (const std::string changed = ChangedWork(m_header); !changed.empty())
        return Unusable(changed, m_options.manifestWayOut);
    if (const std::string undone = UndoneSentence(m_header.order.run); !undone.empty())
        return Unusable(undone, m_options.manifestWayOut);
    if (m_options.description) m_header.order.description = *m_options.description;
    m_facts = ReadRunFacts(m_header);
    m_record.SetRun(m_header.reach, m_header.total, IsTrial());
    if (m_header.oneWorker && m_options.shards > 1)
        return Broken("This run cannot be divided: " + m_header.oneWorkerReason);
    PlanSummary& plan = m_options.plan;
    plan.run = m_header.order.run;
    plan.total = m_header.total;
    plan.bytes = m_header.bytes;
    plan.oneWorker = m_header.oneWorker;
    plan.oneWorkerReason = m_header.oneWorkerReason;
    return true;
}

bool CManifestRun::ReadEarlier()
{
    m_done.emplace(m_header.total);
    m_earlier.emplace(*m_done, 0, m_options.retryFailed);
    if (IsTrial()) return true;
    const auto content = ReadJournal(m_options.journalPath, m_header.order.run, *m_earlier);
    if (!content) return Unusable(content.Error(), m_options.journalWayOut);
    const std::string shard = std::to_string(m_options.shard) + '/' + std::to_string(m_options.shards);
    if (content->name && content->name->shard != shard)
        return Broken("The journal " + m_options.journalPath + " belongs to shard " + content->name->shard + ".");
    m_earlier->Complete();
    if (const auto stamp = platform::StampOf(m_options.journalPath);
        content->name && stamp && m_earlier->Ending().empty())
        m_killedAfter = stamp->modifiedNanoseconds;
    for (int number = 1; m_header.reports && number <= m_done->Total(); ++number)
        if (const auto told = m_earlier->ToldOutcome(number)) m_toldOutcomes[number] = *told;
    m_journalLength = content->length;
    for (int number = 1; number <= m_header.total; ++number) {
        if (!m_done->IsDone(number)) continue;
        const DonePlace place = m_done->At(number);
        const bool again =
            place.outcome == FileOutcome::Stopped || (m_options.retryFailed && IsRetried(place.outcome));
        if (!again) continue;
        m_again.emplace(number, place);
        m_done->Forget(number);
    }
    if (content->name) RemoveUnfinishedFiles(m_options.manifestPath, m_facts, *m_earlier, Tag());
    return true;
}

/// One pass over the manifest finds out how much there is to do, and whether it can be read to its end.
bool CManifestRun::CountFiles()
{
    m_progress = {};
    CManifestReader manifest;
    if (auto header = manifest.Open(m_options.manifestPath); !header)
        return Unusable(header.Error(), m_options.manifestWayOut);
    while (const auto file = manifest.Next()) {
        m_groupedInputs.Add(*file);
        if (m_options.guard)
            if (std::string problem = m_options.guard->ProblemWithInput(*file); !problem.empty())
                return Broken(std::move(problem));
        if (!IsInShard(*file, m_options.shard, m_options.shards)) continue;
        ++m_progress.filesTotal;
        m_progress.bytesTotal += file->size;
        if (!m_done->IsDone(file->number)) {
            ++m_filesLeft;
            continue;
        }
        ++m_progress.filesDone;
        m_progress.bytesDone += file->size;
        if (m_done->At(file->number).outcome != FileOutcome::Saved) ++m_progress.notSaved;
    }
    m_groupedInputs.Complete();
    m_options.plan.alreadyDone = m_progress.filesDone;
    return manifest.Problem().empty() || Unusable(manifest.Problem(), m_options.manifestWayOut);
}

/// The folder for originals is the user's alone, also where he has made the one above it for everybody.
bool CManifestRun::PrepareKeeping()
{
    const std::string& folder = m_header.reach.kept;
    if (folder.empty() || IsTrial()) return true;
    const std::string& above = m_header.order.description.keepOriginals;
    platform::FileResult made;
    if (!platform::FolderExists(above)) made = platform::CreatePrivateFolder(above);
    if (made && !platform::IsOwnFolder(folder)) made = platform::CreatePrivateFolder(folder);
    // A part of the same run may have made it meanwhile.
    if (!made && !platform::IsOwnFolder(folder))
        return Broken("The folder " + folder + " for originals cannot be made (" +
                      platform::ErrorText(made.errorNumber) + ").");
    const bool programs = m_header.startsPrograms || m_header.order.description.finalAction == FinalAction::Execute;
    m_header.order.keeping = {folder, !programs};
    return true;
}

bool CManifestRun::OpenOutputs()
{
    if (!IsTrial()) {
        const std::string shard = std::to_string(m_options.shard) + '/' + std::to_string(m_options.shards);
        const auto opened =
            m_journal.Open(m_options.journalPath, {m_header.order.run, shard, m_header.reach}, m_journalLength);
        if (!opened)
            return Broken("The journal " + m_options.journalPath + " cannot be written (" +
                          platform::ErrorText(opened.errorNumber) + ").");
    }
    if (!m_options.recordPath.empty()) {
        if (const auto opened = m_record.Open(m_options.recordPath); !opened)
            return Broken("The record " + m_options.recordPath + " cannot be written (" +
                          platform::ErrorText(opened.errorNumber) + ").");
        m_result.recordPath = m_options.recordPath;
    }
    // A run that was finished before has nothing to log.
    const bool nothingLeft = m_filesLeft == 0 && m_progress.filesTotal != 0;
    if (m_options.logPath.empty() || nothingLeft) return true;
    if (!m_log.Open(m_options.logPath)) {
        m_result.logProblem = "The log " + m_options.logPath +
                              " cannot be written, or another run is writing to it; this run goes on without it.";
        m_observer.Warning(m_result.logProblem);
        return true;
    }
    m_result.logPath = m_options.logPath;
    return true;
}

// ---- the files

void CManifestRun::Process()
{
    m_observer.Planned(m_options.plan);
    m_log.Preamble(m_header.preamble);
    COutcomeSorter::Reader reader;
    if (!IsTrial()) reader = [this](const DonePlace& place) { return ReadDone(place); };
    COutcomeSorter order(*m_done, std::move(reader), [this](const DoneFile& done, bool written) {
        m_record.Add(done.record);
        m_log.File(done, written);
    });
    COutcomeRecorder results(
        {.done = *m_done, .journal = IsTrial() ? nullptr : &m_journal, .order = &order, .observer = m_observer},
        m_progress);
    order.Begin();
    CGroupedFiles files([this] { return NextFile(); });
    CFilesForWorkers queue({.files = files,
                            .results = results,
                            .facts = m_facts,
                            .earlier = &*m_earlier,
                            .again = &m_again,
                            .readDone = [this](const DonePlace& place) { return ReadDone(place); },
                            .pretended = IsTrial() ? &m_pretended : nullptr});
    const LoopEnd end = RunLoop(queue, results);
    order.Finish();
    if (order.Failed()) Broken("The journal " + m_options.journalPath + " cannot be read again.");
    Close(end, m_problem, results);
}

/// A trial in which nothing is pretended, as when files are only searched, gives no file a name that others would
/// see.
int CManifestRun::Workers() const
{
    const bool touchesNothing = m_header.outputsPerFile == 0 && !m_header.reports && !m_header.startsPrograms &&
                                !m_header.reach.anywhere && m_header.reach.folders.empty() &&
                                m_header.order.description.finalAction == FinalAction::Nothing;
    if (m_header.oneWorker || (IsTrial() && !touchesNothing)) return 1;
    return std::clamp(m_engine.jobs, 1, std::max(m_filesLeft, 1));
}

LoopEnd CManifestRun::RunLoop(CFilesForWorkers& queue, COutcomeRecorder& results)
{
    RunOrder order = m_header.order;
    order.run = Tag();
    CRunLoop loop({.engine = m_engine,
                   .starter = m_starter,
                   .facts = m_facts,
                   .inputs = m_groupedInputs,
                   .queue = queue,
                   .results = results,
                   .observer = m_observer,
                   .pretended = m_pretended,
                   .guard = m_options.guard,
                   .changedWork = [this] { return ChangedWork(m_header); },
                   .order = std::move(order),
                   .run = Tag(),
                   .total = m_header.total,
                   .workers = Workers(),
                   .interruptsSeen = m_options.interruptsSeen});
    if (m_early && !queue.Empty()) loop.Adopt(std::move(m_early));
    m_early.reset();
    const LoopEnd end = loop.Run();
    if (end == LoopEnd::Broken) Broken(loop.Problem());
    if (!m_manifest.Problem().empty()) Broken(m_manifest.Problem());
    return m_problem.empty() ? end : LoopEnd::Broken;
}

void CManifestRun::Close(LoopEnd end, const std::string& problem, const COutcomeRecorder& results)
{
    const std::vector<std::string> epilogue = results.Epilogue();
    m_log.Epilogue(epilogue.empty() ? m_header.epilogue : epilogue);
    // Without its last line the journal is that of a killed run, whose reports are still to be written.
    if (!IsTrial() && WriteReports()) {
        const char* outcome = end == LoopEnd::Finished ? "finished" : end == LoopEnd::Stopped ? "stopped" : "broken";
        const auto added = m_journal.AddEnd(outcome, epilogue);
        if (!added && problem.empty())
            Broken("The journal cannot be written (" + platform::ErrorText(added.errorNumber) + ").");
    }
    CloseOutputs();
    CountOutcomes();
    const int notSaved = m_progress.filesTotal - m_result.Count(FileOutcome::Saved);
    const bool fine = notSaved == 0 && m_header.unreadableFolders == 0;
    if (m_header.unreadableFolders > 0)
        m_observer.Warning(
            std::to_string(m_header.unreadableFolders) +
            " folder(s) could not be read when the run was planned, and their files are no part of it. "
            "Once they can be read, --resume takes them in.");
    m_result.exit = fine ? ExitClass::Fine : ExitClass::SomeNotSaved;
    if (end != LoopEnd::Stopped) return;
    m_result.exit = ExitClass::Stopped;
    m_result.message = "Stopped.";
}

/// Whether an earlier start, which came to its end, has reported what was found in the file.
bool CManifestRun::IsReported(int number)
{
    const auto told = m_toldOutcomes.find(number);
    if (told == m_toldOutcomes.end()) return false;
    if (told->second == m_done->At(number).offset) return true;
    const auto before = ReadDone({.offset = told->second});
    return before && !ReportEventsIn(before->record.findings).empty();
}

/// Reports what was found in the files since the last start that came to its end, in input order. The journal says
/// next that this has happened. False: not all of it could be written.
bool CManifestRun::WriteReports()
{
    if (!m_header.reports) return true;
    CSearchReport report;
    if (!m_toldOutcomes.empty()) report.GoOn();
    if (m_killedAfter) report.MayHaveWritten(*m_killedAfter);
    CReportBatch batch(report);
    std::set<std::string> problems;
    const auto tell = [&](const std::string& problem) {
        if (!problem.empty() && problems.insert(problem).second) m_observer.Warning(problem);
    };
    for (int number = 1; number <= m_done->Total(); ++number) {
        if (!m_done->IsDone(number) || IsReported(number)) continue;
        const auto done = ReadDone(m_done->At(number));
        if (!done) continue;  // the journal's own problem, told with it
        for (ReportEvent& event : ReportEventsIn(done->record.findings)) tell(batch.Add(std::move(event)));
    }
    for (const std::string& problem : batch.Finish()) tell(problem);
    return problems.empty() || Broken(
                                   "The report is not complete. When nothing is in its way any more, --resume "
                                   "writes it.");
}

void CManifestRun::CloseOutputs()
{
    if (m_log.Failed()) {
        m_result.logProblem = "The log " + m_options.logPath + " is incomplete.";
        m_observer.Warning(m_result.logProblem);
    }
    m_log.Close();
    if (const auto closed = m_record.Close(); !closed)
        Broken("The record " + m_options.recordPath + " is incomplete (" + platform::ErrorText(closed.errorNumber) +
               "); resuming the run writes it again.");
}

void CManifestRun::CountOutcomes()
{
    int done = 0;
    for (int number = 1; number <= m_done->Total(); ++number) {
        if (!m_done->IsDone(number)) continue;
        ++m_result.counts[static_cast<std::size_t>(m_done->At(number).outcome)];
        ++done;
    }
    m_result.remaining = m_progress.filesTotal - done;
}

bool CManifestRun::Broken(std::string message)
{
    if (m_problem.empty()) m_problem = std::move(message);
    return false;
}

bool CManifestRun::Unusable(const std::string& problem, const std::string& wayOut)
{
    m_result.resumable = false;
    return Broken(wayOut.empty() ? problem : problem + ' ' + wayOut);
}

std::optional<DoneFile> CManifestRun::ReadDone(const DonePlace& place)
{
    if (!m_readerOpen) m_readerOpen = m_journalReader.Open(m_options.journalPath);
    return m_readerOpen ? m_journalReader.DoneAt(place.offset) : std::nullopt;
}

std::optional<PlannedFile> CManifestRun::NextFile()
{
    while (auto file = m_manifest.Next())
        if (IsInShard(*file, m_options.shard, m_options.shards) && !m_done->IsDone(file->number)) return file;
    return std::nullopt;
}

/// Shards have tags of their own, so that none removes what another is writing.
std::string CManifestRun::Tag() const
{
    if (m_options.shards == 1) return m_header.order.run;
    return m_header.order.run + 's' + std::to_string(m_options.shard) + "of" + std::to_string(m_options.shards);
}
