// The check of a sequence: what would go wrong in a run, or surprise. It tells no value that may be a password.
#pragma once

#include <vector>

#include "sequence/Findings.h"
#include "sequence/SequenceFile.h"

/// What a run brings along besides the sequence.
struct CheckedRun {
    bool hasInput = false, hasOutputFolder = false;
    bool takesInputAway = false;  // its final action does
};

/// Everything that is to be said about a sequence. Errors keep a run from doing what the sequence says. Throws
/// CHostException.
[[nodiscard]] std::vector<SequenceFinding> CheckSource(const SequenceSource& source, const CheckedRun& run);
