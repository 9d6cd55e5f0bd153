// What a sequence takes as input: which files of a folder, and from where.
#pragma once

#include <string>
#include <vector>

#include "engine/Work.h"
#include "sequence/Sequence.h"

class CLogWriter;

/// "pdf" and the extensions of the converters that the sequence's input part lists (of all converters when it lists
/// none), without dots. Throws CHostException.
[[nodiscard]] std::vector<std::string> AcceptedExtensions(CSequenceInput input, CLogWriter& log);

/// The places of the settings, or else those of the sequence; see CWork::InputPlaces. Throws CHostException.
[[nodiscard]] Expected<std::vector<std::string>> SequencePlaces(const ExecutorSettings& settings,
                                                                CSequenceInput input,
                                                                const std::vector<std::string>& extensions,
                                                                Asking asking, CLogWriter& log);
