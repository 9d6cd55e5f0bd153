// Runs a sequence over its input files.
#pragma once

#include "common/ErrorReport.h"
#include "engine/ExecutorSettings.h"
#include "engine/FileOutcome.h"
#include "engine/Sequence.h"

#include <functional>
#include <optional>
#include <string>

class CLogWriter;
class CProgressMonitorWrapper;

/// What the caller adds to a run. All three must be set.
struct ExecutorCallbacks {
    std::function<void(int inputs)> inputsFound;
    /// Called for each file whose result is safe, or was not wanted. Answers what went wrong; empty when nothing did.
    std::function<std::string(const ProcessedFile&)> finalAction;
    /// Called last for each file that was begun.
    std::function<void(const ProcessedFile&)> fileDone;
};

enum class ExecutionEnd {
    Finished,    // every input file was dealt with; single files may have failed
    NotStarted,  // the sequence or its input cannot be used
    Stopped      // canceled, or refused by a command before the first file
};

struct ExecutionResult {
    ExecutionEnd end = ExecutionEnd::Finished;
    std::string message;  // why it did not finish
    int filesProcessed = 0;
    CErrorReport errors;  // one entry for each file that did not come out as it should
};

/// Finds the input files and processes one after the other; a file that fails never stops the run. The commands live
/// until the next file or until the end of the run, whatever the end. `progress` may be null and stays the caller's.
/// Throws CHostException for what is not about one file.
[[nodiscard]] ExecutionResult RunSequence(const ExecutorSettings& settings, CSequence& sequence,
                                          CProgressMonitorWrapper* progress, const ExecutorCallbacks& callbacks,
                                          CLogWriter& log);
