// Sequences as JSON. The fields are listed in SequenceJobs.h.
#pragma once

#include "sequence/SequenceFile.h"

#include <string>
#include "protocol/JsonType.h"

/// Throws CHostException.
[[nodiscard]] Json SequenceReport(const SequenceSource& source);
