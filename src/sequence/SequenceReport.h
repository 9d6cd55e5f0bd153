// Sequences as JSON. The fields are listed in SequenceJobs.h.
#pragma once

#include "sequence/SequenceFile.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

/// Throws CHostException.
[[nodiscard]] nlohmann::json SequenceReport(const SequenceSource& source);
