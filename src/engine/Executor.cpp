#include "engine/Executor.h"

#include "common/FileNames.h"
#include "common/Log.h"
#include "common/Progress.h"
#include "engine/AcceptedTypes.h"
#include "engine/CommandFlights.h"
#include "engine/FileRun.h"
#include "engine/InputFiles.h"
#include "hostcalls/Application.h"

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

ExecutionResult NotStarted(std::string message) { return {ExecutionEnd::NotStarted, std::move(message), 0, {}}; }

/// Why the sequence cannot be run, logged; empty when it can.
std::string SequenceProblem(const CSequence& sequence, int hostMajor, CLogWriter& log)
{
    std::string problem;
    if (hostMajor < kFirstSupportedMajor) {
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

bool MayActOnInput(FileOutcome outcome)
{
    return outcome == FileOutcome::Saved || outcome == FileOutcome::CopiedUnchanged ||
           outcome == FileOutcome::Incomplete;
}

void Finish(ProcessedFile& file, int number, const ExecutorCallbacks& callbacks, ExecutionResult& result)
{
    if (MayActOnInput(file.outcome)) {
        const std::string problem = callbacks.finalAction(file);
        if (!problem.empty()) {
            file.message += (file.message.empty() ? "" : " ") + problem;
            file.outcome = FileOutcome::Incomplete;
        }
        ++result.filesProcessed;
    }
    if (file.outcome != FileOutcome::Saved)
        result.errors.Add({file.message, file.outcome != FileOutcome::CopiedUnchanged, FileName(file.path), number});
    callbacks.fileDone(file);
}

void ProcessFiles(RunContext& run, const std::vector<std::string>& paths, const ExecutorCallbacks& callbacks,
                  ExecutionResult& result)
{
    int number = 0;
    for (const std::string& path : paths) {
        if (run.progress.IsCancelled()) {
            run.log.Line("Command execution is aborted");
            result.end = ExecutionEnd::Stopped;
            result.message = "The run was canceled.";
            return;
        }
        CFileRun fileRun(run, path, ++number);
        ProcessedFile file = fileRun.Process();
        Finish(file, number, callbacks, result);
        if (fileRun.StopReason().empty()) continue;
        result.end = ExecutionEnd::Stopped;
        result.message = fileRun.StopReason();
        return;
    }
}

}  // namespace

ExecutionResult RunSequence(const ExecutorSettings& settings, CSequence& sequence, CProgressMonitorWrapper* progress,
                            const ExecutorCallbacks& callbacks, CLogWriter& log)
{
    const int hostMajor = GetHostVersion().major;
    if (std::string problem = SequenceProblem(sequence, hostMajor, log); !problem.empty())
        return NotStarted(std::move(problem));
    const CCabView input = sequence.Input();
    const auto paths = FindInputFiles(settings, input, AcceptedExtensions(settings, input, log), log);
    if (!paths) return NotStarted(paths.Error());

    ExecutionResult result;
    log.NameNumber("Number of input files", static_cast<long long>(paths->size()), 1);
    callbacks.inputsFound(static_cast<int>(paths->size()));
    if (paths->empty()) {
        log.Line("No input files have been found at specified location, processing is terminated");
        return result;
    }
    CCustomMonitor silent;
    CProgressMonitorWrapper& monitor = progress ? *progress : silent;
    CommandList commands;
    RunContext run{settings, sequence, log, monitor, commands, hostMajor, static_cast<int>(paths->size()), false};
    const CProgressScope scope(monitor, run.fileCount);
    ProcessFiles(run, *paths, callbacks, result);
    PostflightSequence(commands, log);
    return result;
}
