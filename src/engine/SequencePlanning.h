// What planning a run wants to know of its sequence.
#pragma once

#include <string>

#include "engine/Work.h"
#include "sequence/SequenceFacts.h"

/// Everything but the errors of a check. Looks for the sequence's output folder on the disk.
[[nodiscard]] WorkFacts FactsOfSequence(const SequenceFacts& sequence, const PlanRequest& request);

/// The errors that a check of the sequence finds, one a line, those left out that are told otherwise when a run is
/// planned; empty when there are none or the user has said yes to them. Reads the sequence anew. Throws
/// CHostException.
[[nodiscard]] std::string SequenceErrors(const std::string& path, const PlanRequest& request);
