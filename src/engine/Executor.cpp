#include "engine/Executor.h"

#include <memory>
#include <utility>

#include "base/Names.h"
#include "common/Log.h"
#include "common/Progress.h"
#include "engine/InputCollector.h"

namespace {

/// Shows the progress of a run as long as it lives.
class CProgressScope {
public:
    CProgressScope(CProgressMonitorWrapper& progress, int files) : m_progress(progress)
    {
        m_progress.BeginOperation();
        m_progress.SetOperationText("Start processing a batch sequence...");
        m_progress.SetDuration(files);
    }
    CProgressScope(const CProgressScope&) = delete;
    CProgressScope& operator=(const CProgressScope&) = delete;
    ~CProgressScope() { m_progress.EndOperation(); }

private:
    CProgressMonitorWrapper& m_progress;
};

ExecutionResult NotStarted(std::string message) { return {ExecutionEnd::NotStarted, std::move(message)}; }

bool MayActOnInput(FileOutcome outcome)
{
    return outcome == FileOutcome::Saved || outcome == FileOutcome::CopiedUnchanged ||
           outcome == FileOutcome::Incomplete;
}

void Finish(ProcessedFile& file, const ExecutorCallbacks& callbacks)
{
    if (MayActOnInput(file.outcome)) {
        const std::string problem = callbacks.finalAction(file);
        if (!problem.empty()) {
            file.message += (file.message.empty() ? "" : " ") + problem;
            file.outcome = FileOutcome::Incomplete;
        }
    }
    callbacks.fileDone(file);
}

void Stop(ExecutionResult& result, const std::string& reason)
{
    result.end = ExecutionEnd::Stopped;
    result.message = reason;
}

void ProcessFiles(const WorkServices& run, CWork& work, CInputSource& inputs, const ExecutorCallbacks& callbacks,
                  ExecutionResult& result)
{
    while (const auto input = inputs.Next()) {
        if (run.progress.IsCancelled()) {
            run.log.Line("Command execution is aborted");
            return Stop(result, "The run was cancelled.");
        }
        if (input->finalActionOnly) {
            ProcessedFile file{.path = input->path};
            Finish(file, callbacks);
            continue;
        }
        ProcessedFile file = work.Process(input->path, input->number);
        Finish(file, callbacks);
        if (const std::string reason = work.StopReason(); !reason.empty()) return Stop(result, reason);
    }
}

/// The files that the caller hands out, or else those that are collected. Fails: logged.
using Source = Expected<std::unique_ptr<CInputSource>>;
Source CollectedSource(const ExecutorSettings& settings, const CWork& work, std::vector<std::string> extensions,
                       CLogWriter& log)
{
    auto collected = CollectInputFiles(settings, work, std::move(extensions), log);
    if (!collected) return Failure(collected.Error());
    return std::unique_ptr<CInputSource>(std::make_unique<CCollectedInputs>(std::move(*collected)));
}

ExecutionResult RunFiles(const WorkServices& run, CWork& work, CInputSource& inputs,
                         const ExecutorCallbacks& callbacks)
{
    ExecutionResult result;
    const CProgressScope scope(run.progress, run.fileCount);
    work.Begin(run);
    ProcessFiles(run, work, inputs, callbacks, result);
    work.Finish();
    return result;
}

}  // namespace

void LogInputCount(std::size_t inputs, CLogWriter& log)
{
    log.NameNumber("Number of input files", static_cast<long long>(inputs), 1);
    if (inputs == 0) log.Line("No input files have been found at specified location, processing is terminated");
}

ExecutionResult RunWork(const ExecutorSettings& settings, CWork& work, CProgressMonitorWrapper* progress,
                        const ExecutorCallbacks& callbacks, CLogWriter& log)
{
    if (std::string problem = work.Refusal(log); !problem.empty()) return NotStarted(std::move(problem));
    auto extensions = InputExtensions(settings, work, log);
    Source collected = std::unique_ptr<CInputSource>();
    if (callbacks.inputs) {
        (void)work.InputPlaces(settings, {}, Asking::Unwanted, log, {});  // logged only
    } else {
        collected = CollectedSource(settings, work, std::move(extensions), log);
        if (!collected) return NotStarted(collected.Error());
    }
    CInputSource& inputs = callbacks.inputs ? *callbacks.inputs : **collected;
    const int total = inputs.Total();
    // Somebody else's files that are all taken are not files that were not found.
    if (total > 0 || !callbacks.inputs) LogInputCount(static_cast<std::size_t>(total), log);
    callbacks.inputsFound(total);
    if (total == 0) return {};

    CSilentProgress silent;
    return RunFiles({settings, log, progress ? *progress : silent, callbacks.sequencePreflight, total}, work, inputs,
                    callbacks);
}
