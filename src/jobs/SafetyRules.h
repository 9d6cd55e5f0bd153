// Whether a run may start without anybody losing something by surprise.
#pragma once

#include "batchrun/RunSettings.h"
#include "sequence/SequenceFacts.h"

#include <string>
#include <vector>

/// A run that is to be planned.
struct PlanRequest {
    RunSettings settings;
    RunDescription permitted;  // says what the user has said yes to
};

/// Why the run must not start and what to do about it; empty when it may. Looks for the folders on the disk.
[[nodiscard]] std::string SafetyProblem(const SequenceFacts& facts, const PlanRequest& request);

/// The errors that a check of the sequence finds, one a line, those left out that a rule of SafetyProblem is about;
/// empty when there are none or the user has said yes to them. Reads the sequence anew. Throws CHostException.
[[nodiscard]] std::string SequenceErrors(const PlanRequest& request);

/// What the user may not expect, although the run may start; a sentence each.
[[nodiscard]] std::vector<std::string> SafetyWarnings(const SequenceFacts& facts, const PlanRequest& request);

/// Why only one process may do the whole run; empty when several may.
[[nodiscard]] std::string OneWorkerReason(const SequenceFacts& facts);
