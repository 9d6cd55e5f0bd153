// Does the work of a run on its input files.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "engine/Work.h"

class CInputSource;
class CLogWriter;
class CProgressMonitorWrapper;

/// What the caller adds to a run. The first three must be set.
struct ExecutorCallbacks {
    std::function<void(int inputs)> inputsFound;
    /// Called for each file whose result is safe, or was not wanted. Answers what went wrong; empty when nothing did.
    std::function<std::string(const ProcessedFile&)> finalAction;
    /// Called last for each file that was begun.
    std::function<void(const ProcessedFile&)> fileDone;
    /// Called before (true) and after (false) lines of the whole run that are logged among those of a file, such as a
    /// sequence's preflight.
    std::function<void(bool begins)> sequencePreflight = {};
    /// Where the input files come from; null: they are collected from the places of settings and work. Borrowed.
    CInputSource* inputs = nullptr;
};

enum class ExecutionEnd {
    Finished,    // every input file was dealt with; single files may have failed
    NotStarted,  // the work or its input cannot be used
    Stopped      // cancelled, or refused by the work before the first file
};

struct ExecutionResult {
    ExecutionEnd end = ExecutionEnd::Finished;
    std::string message;  // why it did not finish
};

/// Logs the number of input files, and that there are none.
void LogInputCount(std::size_t inputs, CLogWriter& log);

/// Finds the input files and processes one after the other; a file that fails never stops the run. The work must be
/// loaded. `progress` may be null and stays the caller's. Throws CHostException for what is not about one file.
[[nodiscard]] ExecutionResult RunWork(const ExecutorSettings& settings, CWork& work,
                                      CProgressMonitorWrapper* progress, const ExecutorCallbacks& callbacks,
                                      CLogWriter& log);
