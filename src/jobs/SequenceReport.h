// Sequences and what is to be said about them as JSON. The fields are listed in SequenceJobs.h.
#pragma once

#include "jobs/SequenceSource.h"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

/// The parameters of a step, passwords masked. Throws CHostException.
[[nodiscard]] nlohmann::json ParametersReport(const std::string& handler, CCabView parameters);

/// Throws CHostException.
[[nodiscard]] nlohmann::json SequenceReport(const SequenceSource& source);

[[nodiscard]] nlohmann::json FindingsReport(const std::vector<SequenceFinding>& findings);
[[nodiscard]] const char* SeverityWord(SequenceFinding::Severity severity);
[[nodiscard]] const char* FormWord(SequenceForm form);
