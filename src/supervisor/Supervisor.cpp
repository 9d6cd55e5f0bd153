#include "supervisor/Supervisor.h"

#include "platform/Interrupts.h"
#include "platform/Paths.h"
#include "supervisor/HostJob.h"
#include "supervisor/Json.h"
#include "supervisor/Leftovers.h"
#include "supervisor/ManifestRun.h"
#include "supervisor/Planning.h"
#include "supervisor/RunFolder.h"
#include "supervisor/ScratchFolder.h"
#include "supervisor/Supplement.h"

#include <algorithm>
#include <utility>

namespace {

RunResult Failed(ExitClass exit, std::string message)
{
    RunResult result;
    result.exit = exit;
    result.message = std::move(message);
    return result;
}

RunResult Failed(const PlanFailure& failure) { return Failed(failure.exit, failure.message); }

constexpr char kNoScratchFolder[] = "No folder for temporary files can be made.";

int CountedInterrupts()
{
    platform::CountInterrupts();
    return platform::Interrupts();
}

std::string LogPathFor(const std::string& wanted) { return wanted.empty() ? UserPaths().logFile : wanted; }

/// What the plug-in says about it is in the user's log as if it had run in the user's own host.
RunResult NotPlanned(CPlanning& planning, const std::string& logPath)
{
    RunResult result = Failed(planning.Failure());
    const std::vector<std::string>& lines = planning.Result().log;
    CRunLog log;
    if (lines.empty() || !log.Open(logPath)) return result;
    log.Preamble(lines);
    log.Close();
    result.logPath = logPath;
    return result;
}

RunResult RunTrial(const RunOptions& options, int interrupts, CRunObserver& observer)
{
    const CScratchFolder scratch;
    if (scratch.Path().empty()) return Failed(ExitClass::Broken, kNoScratchFolder);
    const CWorkerStarter starter(options.engine, scratch.Path(), -1);
    ManifestRunOptions run{.manifestPath = scratch.Path() + platform::kSeparator + "manifest.jsonl",
                           .interruptsSeen = interrupts};
    CPlanning planning(starter, options.request, interrupts, observer);
    if (!planning.Run(run.manifestPath, NewRunId(), true)) return Failed(planning.Failure());
    run.plan = std::move(planning.Result().summary);
    return CManifestRun(options.engine, starter, std::move(run), observer).Run();
}

}  // namespace

RunResult RunPlanned(const RunOptions& options, CRunObserver& observer)
{
    const int interrupts = CountedInterrupts();
    if (options.dryRun) return RunTrial(options, interrupts, observer);
    CRunFolder folder;
    if (std::string problem = folder.Open(options.request); !problem.empty())
        return Failed(ExitClass::Broken, std::move(problem));
    const CWorkerStarter starter(options.engine, folder.Path(), folder.LockDescriptor());
    ManifestRunOptions run{.manifestPath = folder.ManifestPath(),
                           .journalPath = folder.JournalPath(),
                           .retryFailed = options.retryFailed,
                           .logPath = LogPathFor(options.logPath),
                           .recordPath = options.recordPath,
                           .interruptsSeen = interrupts};
    std::unique_ptr<CWorker> early;
    const bool resumes = options.resume && platform::FileExists(run.manifestPath);
    if (options.resume && !resumes) observer.Remark("There is no run to go on with; this one starts anew.");
    if (resumes) AddLeftOutFiles(starter, options.request, run.manifestPath, run.journalPath, interrupts, observer);
    if (!resumes) {
        GiveUpRun(run.manifestPath, run.journalPath, observer);
        // The first worker starts while another host plans.
        std::string problem;
        early = starter.Start("1", &problem);
        CPlanning planning(starter, options.request, interrupts, observer);
        // The manifest first: a journal without one is nobody's.
        (void)platform::DeleteFile(run.manifestPath);
        (void)platform::DeleteFile(run.journalPath);
        if (!planning.Run(run.manifestPath, NewRunId(), false)) return NotPlanned(planning, run.logPath);
        run.plan = std::move(planning.Result().summary);
    }
    CManifestRun files(options.engine, starter, std::move(run), observer);
    if (early) files.Adopt(std::move(early));
    RunResult result = files.Run();
    if (result.exit != ExitClass::Broken) folder.RemoveWorkerFolders();
    return result;
}

RunResult PlanRun(const PlanOptions& options, CRunObserver& observer)
{
    const int interrupts = CountedInterrupts();
    const CScratchFolder scratch;
    if (scratch.Path().empty()) return Failed(ExitClass::Broken, kNoScratchFolder);
    const CWorkerStarter starter(options.engine, scratch.Path(), -1);
    CPlanning planning(starter, options.request, interrupts, observer);
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
    return RunHostJob(starter, "job", LineOf(*object), interrupts, observer, onReport).job;
}
