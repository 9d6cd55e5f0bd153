// What planning a run wants to know of its sequence.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/Work.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"
#include "sequence/StepDescription.h"

struct StepFacts {
    std::string handler;  // under which it would be made; that of the sequence when it is not available
    bool available = true;
    bool sequenceCallbacks = false;  // wants to be called before or after the whole sequence
    StepMaker maker = StepMaker::Other;
    SharedWork shared = SharedWork::None;
    bool protects = false;
    bool startsPrograms = false;
    std::optional<SaveStepFacts> save;  // of save steps only
    std::string script;                 // of script steps only
    std::vector<CopyPlace> copies;
};

/// What a sequence does, as far as planning asks.
struct SequenceFacts {
    int hostMajor = 0;
    int inputKind = -1;
    std::vector<StepFacts> steps;
    OutputSettings output;
};

/// The sequence must be complete. Throws CHostException.
[[nodiscard]] SequenceFacts ReadSequenceFacts(const CSequence& sequence, int hostMajor);

/// How many results the sequence writes for each file.
[[nodiscard]] int ResultsPerFile(const SequenceFacts& facts);

/// Everything but the errors of a check. Looks for the sequence's output folder on the disk.
[[nodiscard]] WorkFacts FactsOfSequence(const SequenceFacts& sequence, const PlanRequest& request);

/// The errors that a check of the sequence finds, one a line, those left out that are told otherwise when a run is
/// planned; empty when there are none or the user has said yes to them. Reads the sequence anew. Throws
/// CHostException.
[[nodiscard]] std::string SequenceErrors(const std::string& path, const PlanRequest& request);
