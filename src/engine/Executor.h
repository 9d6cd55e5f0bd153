// Runs a sequence over its input files.
#pragma once

#include "engine/ExecutorSettings.h"
#include "engine/ProcessedFile.h"
#include "sequence/Sequence.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

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
    /// Called before (true) and after (false) the sequence's preflight, which is logged among the lines of the first
    /// file that could be opened.
    std::function<void(bool begins)> sequencePreflight = {};
    /// Where the input files come from; null: they are collected from the places of settings and sequence. Borrowed.
    CInputSource* inputs = nullptr;
};

enum class ExecutionEnd {
    Finished,    // every input file was dealt with; single files may have failed
    NotStarted,  // the sequence or its input cannot be used
    Stopped      // canceled, or refused by a command before the first file
};

struct ExecutionResult {
    ExecutionEnd end = ExecutionEnd::Finished;
    std::string message;  // why it did not finish
};

/// Why the sequence cannot be run in this host, logged; empty when it can. Throws CHostException.
[[nodiscard]] std::string SequenceProblem(const CSequence& sequence, CLogWriter& log);

/// Logs the number of input files, and that there are none.
void LogInputCount(std::size_t inputs, CLogWriter& log);

/// Finds the input files and processes one after the other; a file that fails never stops the run. The commands live
/// until the next file or until the end of the run, whatever the end. `progress` may be null and stays the caller's.
/// Throws CHostException for what is not about one file.
[[nodiscard]] ExecutionResult RunSequence(const ExecutorSettings& settings, CSequence& sequence,
                                          CProgressMonitorWrapper* progress, const ExecutorCallbacks& callbacks,
                                          CLogWriter& log);
