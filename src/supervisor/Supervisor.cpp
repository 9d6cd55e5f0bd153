#include "supervisor/Supervisor.h"

#include <algorithm>
#include <utility>

#include "base/Names.h"
#include "platform/ThisProcess.h"
#include "protocol/Json.h"
#include "supervisor/ManifestRun.h"
#include "supervisor/RunArchive.h"
#include "supervisor/RunFolder.h"
#include "supervisor/plan/HostJob.h"
#include "supervisor/plan/Planning.h"
#include "supervisor/results/OutputGuard.h"
#include "supervisor/resume/CleanUp.h"
#include "supervisor/resume/PlanChanges.h"

namespace {

RunResult Failed(ExitClass exit, std::string message)
{
    RunResult result;
    result.exit = exit;
    result.message = std::move(message);
    return result;
}

RunResult Failed(const PlanFailure& failure) { return Failed(failure.exit, failure.message); }

constexpr char kPlanAnew[] = "To begin anew, make a new plan with \"ferrule plan\" and give its parts new journals.";
constexpr char kJournalAnew[] =
    "To do this part from its beginning, move that file away or name another one with --journal; what the part has "
    "done already is done once more then.";

RunResult NotResumed(const std::string& problem)
{
    RunResult result = Failed(ExitClass::Broken, problem + ' ' + kStartAnew);
    result.resumable = false;
    return result;
}

constexpr char kNoScratchFolder[] = "No folder for temporary files can be made.";

int CountedInterrupts()
{
    platform::CountInterrupts();
    return platform::Interrupts();
}

/// Empty: none is kept.
std::string LogPathFor(const std::string& wanted)
{
    if (IsDevice(wanted)) return {};
    return wanted.empty() ? UserPaths().logFile : wanted;
}

/// What the plug-in says about it is in the user's log as if it had run in the user's own host.
RunResult NotPlanned(CPlanning& planning, const std::string& logPath)
{
    RunResult result = Failed(planning.Failure());
    const std::vector<std::string>& lines = planning.Result().log;
    CRunLog log;
    if (lines.empty() || logPath.empty() || !log.Open(logPath)) return result;
    log.Preamble(lines);
    log.Close();
    result.logPath = logPath;
    return result;
}

COutputGuard GuardFor(const RunOptions& options)
{
    COutputGuard guard;
    guard.AddOutput(OutputKind::Record, options.recordPath);
    guard.AddOutput(OutputKind::Report, options.reportPath);
    if (!options.dryRun) guard.AddOutput(OutputKind::Log, options.logPath);
    guard.AddNeeded(options.request.work);
    guard.AddNeeded("the password file", options.engine.passwordFile);
    return guard;
}

/// A run that is given up is kept like one that came to its end, unless that has been done.
void KeepFormerRun(const CRunArchive& archive, const ManifestRunOptions& run)
{
    CManifestReader manifest;
    const auto header = manifest.Open(run.manifestPath);
    const bool begun = header && header->total != 0 && platform::FileSize(run.journalPath).value_or(0) != 0;
    if (begun && !archive.Has(header->order.run))
        (void)archive.Keep(header->order.run, run.manifestPath, run.journalPath);
}

/// The plain files stay until the next run of the same request, so that this one can be gone on with.
void KeepRun(const CRunArchive& archive, const CRunFolder& folder, bool removeOld, const RunResult& result,
             CRunObserver& observer)
{
    if (result.exit == ExitClass::Broken) return;
    folder.RemoveWorkerFolders();
    if (result.exit == ExitClass::Stopped) return;
    if (result.plan.total != 0) {
        const std::string problem = archive.Keep(result.plan.run, folder.ManifestPath(), folder.JournalPath());
        if (!problem.empty()) observer.Remark(problem);
    }
    if (removeOld) archive.RemoveOld();
}

/// Why the plan is not the one of the request; a plan that cannot be read is told about later.
std::string ChangedRequest(const std::string& manifestPath, const RunDescription& request)
{
    CManifestReader manifest;
    const auto header = manifest.Open(manifestPath);
    if (!header) return {};
    std::string changed = ChangedWork(*header);
    return changed.empty() ? ChangedOptions(*header, request) : changed;
}

RunResult RunTrial(const RunOptions& options, const COutputGuard& guard, int interrupts, CRunObserver& observer)
{
    const CScratchFolder scratch;
    if (scratch.Path().empty()) return Failed(ExitClass::Broken, kNoScratchFolder);
    const CWorkerStarter starter(options.engine, scratch.Path(), -1);
    ManifestRunOptions run{.manifestPath = ManifestIn(scratch.Path()),
                           .recordPath = options.recordPath,
                           .guard = &guard,
                           .interruptsSeen = interrupts};
    CPlanning planning(starter, options.request, interrupts, observer);
    if (!planning.Run(run.manifestPath, NewRunId(), true, options.hashes)) return Failed(planning.Failure());
    run.plan = std::move(planning.Result().summary);
    return CManifestRun(options.engine, starter, std::move(run), observer).Run();
}

}  // namespace

RunResult RunPlanned(const RunOptions& options, CRunObserver& observer)
{
    const int interrupts = CountedInterrupts();
    const COutputGuard guard = GuardFor(options);
    if (std::string problem = guard.Problem(); !problem.empty()) return Failed(ExitClass::Broken, std::move(problem));
    if (options.dryRun) return RunTrial(options, guard, interrupts, observer);
    CRunFolder folder;
    if (std::string problem = options.folder.empty() ? folder.Open(options.request) : folder.OpenAt(options.folder);
        !problem.empty())
        return Failed(ExitClass::Broken, std::move(problem));
    const CWorkerStarter starter(options.engine, folder.Path(), folder.LockDescriptor());
    ManifestRunOptions run{.manifestPath = folder.ManifestPath(),
                           .journalPath = folder.JournalPath(),
                           .retryFailed = options.retryFailed,
                           .logPath = LogPathFor(options.logPath),
                           .recordPath = options.recordPath,
                           .guard = &guard,
                           .interruptsSeen = interrupts};
    const CRunArchive archive(FolderOf(folder.Path()));
    std::unique_ptr<CWorker> early;
    const bool resumes = options.resume && platform::FileExists(run.manifestPath);
    if (options.resume) {
        const std::string changed = resumes ? ChangedRequest(run.manifestPath, options.request)
                                            : UnfinishedRelative(folder.Path(), options.request);
        if (!changed.empty()) return NotResumed(changed);
        run.manifestWayOut = run.journalWayOut = kStartAnew;
    }
    if (options.resume && !resumes) observer.Remark("There is no run to go on with; this one starts anew.");
    if (resumes) run.description = options.request;  // with what is permitted now
    if (resumes) AddLeftOutFiles(starter, options.request, run.manifestPath, run.journalPath, interrupts, observer);
    if (!resumes) {
        GiveUpRun(run.manifestPath, run.journalPath, observer);
        // The first worker starts while another host plans.
        std::string problem;
        early = starter.Start("1", &problem);
        CPlanning planning(starter, options.request, interrupts, observer);
        KeepFormerRun(archive, run);
        // The manifest first: a journal without one is nobody's.
        (void)platform::DeleteFile(run.manifestPath);
        (void)platform::DeleteFile(run.journalPath);
        if (!planning.Run(run.manifestPath, NewRunId(), false)) return NotPlanned(planning, run.logPath);
        run.plan = std::move(planning.Result().summary);
    }
    CManifestRun files(options.engine, starter, std::move(run), observer);
    if (early) files.Adopt(std::move(early));
    RunResult result = files.Run();
    KeepRun(archive, folder, options.folder.empty(), result, observer);
    return result;
}

RunResult PlanRun(const PlanOptions& options, CRunObserver& observer)
{
    const int interrupts = CountedInterrupts();
    COutputGuard guard;
    guard.AddOutput(OutputKind::Manifest, options.manifestPath);
    guard.AddNeeded(options.request.work);
    if (std::string problem = guard.Problem(); !problem.empty()) return Failed(ExitClass::Broken, std::move(problem));
    const CScratchFolder scratch;
    if (scratch.Path().empty()) return Failed(ExitClass::Broken, kNoScratchFolder);
    const CWorkerStarter starter(options.engine, scratch.Path(), -1);
    CPlanning planning(starter, options.request, interrupts, observer);
    planning.GuardWith(guard);
    if (!planning.Run(options.manifestPath, NewRunId(), false)) return Failed(planning.Failure());
    RunResult result;
    result.exit = ExitClass::Fine;
    result.plan = std::move(planning.Result().summary);
    result.remaining = result.plan.total;
    observer.Planned(result.plan);
    return result;
}

RunResult RunShard(const ShardOptions& options, CRunObserver& observer)
{
    const int interrupts = CountedInterrupts();
    if (options.shards < 1 || options.shard < 1 || options.shard > options.shards)
        return Failed(ExitClass::Broken, "There is no such shard.");
    COutputGuard guard;
    guard.AddOutput(OutputKind::Journal, options.journalPath);
    guard.AddOutput(OutputKind::Record, options.recordPath);
    guard.AddOutput(OutputKind::Report, options.reportPath);
    guard.AddNeeded("the manifest", options.manifestPath);
    guard.AddNeeded("the password file", options.engine.passwordFile);
    if (std::string problem = guard.Problem(); !problem.empty()) return Failed(ExitClass::Broken, std::move(problem));
    platform::CFileLock lock;
    // A file of its own: where locking a file keeps others from reading it, nobody could read the journal.
    if (std::string problem = TakeLock(lock, options.journalPath + ".lock"); !problem.empty())
        return Failed(ExitClass::Broken, std::move(problem));
    const CScratchFolder scratch;
    if (scratch.Path().empty()) return Failed(ExitClass::Broken, kNoScratchFolder);
    const CWorkerStarter starter(options.engine, scratch.Path(), lock.Descriptor());
    ManifestRunOptions run{.manifestPath = options.manifestPath,
                           .journalPath = options.journalPath,
                           .shard = options.shard,
                           .shards = options.shards,
                           .retryFailed = options.retryFailed,
                           .recordPath = options.recordPath,
                           .guard = &guard,
                           .manifestWayOut = kPlanAnew,
                           .journalWayOut = kJournalAnew,
                           .interruptsSeen = interrupts};
    return CManifestRun(options.engine, starter, std::move(run), observer).Run();
}

JobResult RunJob(const EngineOptions& engine, const std::string& job, CRunObserver& observer,
                 const std::function<void(const std::string& json)>& onReport)
{
    const int interrupts = CountedInterrupts();
    const CScratchFolder scratch;
    if (scratch.Path().empty()) return {.message = kNoScratchFolder};
    const auto object = ParseObject(job);
    if (!object) return {.message = "The job is no JSON object."};
    const CWorkerStarter starter(engine, scratch.Path(), -1);
    std::function<void(const Json&)> handOver;
    if (onReport) handOver = [&](const Json& report) { onReport(LineOf(report)); };
    return RunHostJob(starter, "job", LineOf(*object), interrupts, observer, handOver).job;
}
