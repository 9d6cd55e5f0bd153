// Which files of a folder are input of a sequence.
#pragma once

#include "engine/ExecutorSettings.h"
#include "sequence/Sequence.h"

#include <string>
#include <vector>

class CLogWriter;

/// The accepted extensions, without dots: the ones that the settings allow, or else "pdf" and those of the converters
/// that the sequence's input part lists (of all converters when it lists none). Throws CHostException.
[[nodiscard]] std::vector<std::string> AcceptedExtensions(const ExecutorSettings& settings, CSequenceInput input,
                                                          CLogWriter& log);
