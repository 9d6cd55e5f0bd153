// Finds the input files of a run.
#pragma once

#include "common/Expected.h"
#include "engine/ExecutorSettings.h"
#include "hostcalls/Cab.h"

#include <string>
#include <vector>

class CLogWriter;

/// The input files, in the order in which they are to be processed; empty when the place is there and holds none.
/// Fails, logged, when there is no place to look at. `extensions`: the accepted ones. Throws CHostException.
[[nodiscard]] Expected<std::vector<std::string>> FindInputFiles(const ExecutorSettings& settings, CCabView input,
                                                                std::vector<std::string> extensions, CLogWriter& log);
