// Loads sequence files, in the host's own form or as XML.
#pragma once

#include "base/Expected.h"
#include "engine/Sequence.h"

#include <string>

class CLogWriter;

/// Loads a sequence; `path` without quotes. A failure is logged, and comes back as a sentence that names the file.
[[nodiscard]] Expected<CSequence> LoadSequenceFile(const std::string& path, CLogWriter& log);
