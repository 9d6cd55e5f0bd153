// Sequences as JSON. The fields are listed in SequenceJobs.h.
#pragma once

#include <string>

#include "protocol/JsonType.h"
#include "sequence/SequenceFile.h"

/// Throws CHostException.
[[nodiscard]] Json SequenceReport(const SequenceSource& source);
