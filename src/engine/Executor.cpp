#include "engine/Executor.h"

#include "base/PathNames.h"
#include "common/Log.h"
#include "common/Progress.h"
#include "engine/AcceptedTypes.h"
#include "engine/CommandFlights.h"
#include "engine/FileRun.h"
#include "engine/InputFiles.h"
#include "hostcalls/Application.h"

#include <memory>
#include <utility>

namespace {

constexpr int kFirstSupportedMajor = 6;

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

void ProcessFiles(RunContext& run, CInputSource& inputs, const ExecutorCallbacks& callbacks, ExecutionResult& result)
{
    while (const auto input = inputs.Next()) {
        if (run.progress.IsCancelled()) {
            run.log.Line("Command execution is aborted");
            return Stop(result, "The run was canceled.");
        }
        if (input->finalActionOnly) {
            ProcessedFile file{.path = input->path};
            Finish(file, callbacks);
            continue;
        }
        CFileRun fileRun(run, input->path, input->number);
        ProcessedFile file = fileRun.Process();
        Finish(file, callbacks);
        if (!fileRun.StopReason().empty()) return Stop(result, fileRun.StopReason());
    }
}

/// The files that the caller hands out, or else those that are collected. Fails: logged.
using Source = Expected<std::unique_ptr<CInputSource>>;
Source CollectedSource(const ExecutorSettings& settings, const CSequence& sequence,
                       std::vector<std::string> extensions, CLogWriter& log)
{
    auto collected = CollectInputFiles(settings, sequence, std::move(extensions), log);
    if (!collected) return Failure(collected.Error());
    return std::unique_ptr<CInputSource>(std::make_unique<CCollectedInputs>(std::move(*collected)));
}

ExecutionResult RunFiles(RunContext& run, CInputSource& inputs, const ExecutorCallbacks& callbacks)
{
    ExecutionResult result;
    const CProgressScope scope(run.progress, run.fileCount);
    ProcessFiles(run, inputs, callbacks, result);
    PostflightSequence(run.commands, run.log);
    return result;
}

}  // namespace

std::string SequenceProblem(const CSequence& sequence, CLogWriter& log)
{
    std::string problem;
    if (GetHostVersion().major < kFirstSupportedMajor) {
        problem = "Sequences need a host of version " + std::to_string(kFirstSupportedMajor) + " or later.";
    } else if (!sequence.IsComplete()) {
        problem = "The sequence lacks its commands, its input or its output part.";
    }
    if (problem.empty()) {
        log.Line("Sequence information has been successfully loaded.");
    } else {
        log.NameValue("Sequence is rejected", problem, 1);
    }
    return problem;
}

void LogInputCount(std::size_t inputs, CLogWriter& log)
{
    log.NameNumber("Number of input files", static_cast<long long>(inputs), 1);
    if (inputs == 0) log.Line("No input files have been found at specified location, processing is terminated");
}

ExecutionResult RunSequence(const ExecutorSettings& settings, CSequence& sequence, CProgressMonitorWrapper* progress,
                            const ExecutorCallbacks& callbacks, CLogWriter& log)
{
    if (std::string problem = SequenceProblem(sequence, log); !problem.empty()) return NotStarted(std::move(problem));
    const CCabView input = sequence.Input();
    auto extensions = AcceptedExtensions(settings, input, log);
    Source collected = std::unique_ptr<CInputSource>();
    if (callbacks.inputs) {
        LogInputPlaces(settings, input, log);
    } else {
        collected = CollectedSource(settings, sequence, std::move(extensions), log);
        if (!collected) return NotStarted(collected.Error());
    }
    CInputSource& inputs = callbacks.inputs ? *callbacks.inputs : **collected;
    const int total = inputs.Total();
    // Somebody else's files that are all taken are not files that were not found.
    if (total > 0 || !callbacks.inputs) LogInputCount(static_cast<std::size_t>(total), log);
    callbacks.inputsFound(total);
    if (total == 0) return {};

    CSilentProgress silent;
    CommandList commands;
    RunContext run{settings,
                   sequence,
                   log,
                   progress ? *progress : silent,
                   commands,
                   callbacks.sequencePreflight,
                   GetHostVersion().major,
                   total,
                   false};
    return RunFiles(run, inputs, callbacks);
}
