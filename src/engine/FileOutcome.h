// How one input file of a run ended, and why.
#pragma once

#include "platform/Files.h"

#include <optional>
#include <string>

enum class FileOutcome {
    Saved,            // all steps done and the result written, or nothing was to be written
    CopiedUnchanged,  // security forbade changes: the output is a copy of the input
    Incomplete,       // written, but a step was missing or failed, or the final action failed
    Failed,           // could not be opened, processed or saved; the input was left as it is
    Skipped,          // not processed at all, on purpose
    Stopped           // the run was stopped while the file was being processed
};

/// What became of one input file. `message` is one sentence for people, empty when there is nothing to say.
struct ProcessedFile {
    std::string path;
    FileOutcome outcome = FileOutcome::Saved;
    std::string message = {};
    /// The input as it was processed; after a save in its own place, as it was saved. Nothing when nobody knows it.
    std::optional<platform::FileStamp> input = {};
    /// What the input has lost to damage, a sentence: then it must stay. Empty when nothing, or when that is
    /// accepted.
    std::string loss = {};
};
