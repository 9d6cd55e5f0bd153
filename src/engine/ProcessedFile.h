// How one input file of a run ended, and why.
#pragma once

#include "platform/Files.h"
#include "protocol/Outcomes.h"

#include <optional>
#include <string>

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
