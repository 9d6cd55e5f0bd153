// What a plan finds out about a run as a whole.
#pragma once

#include <string>
#include <vector>

#include "protocol/JsonType.h"

/// Texts are UTF-8; paths in them as in base/Text.h.
struct PlanReport {
    int total = 0;                     ///< input files
    std::string oneWorkerReason = {};  ///< why only one process may do the whole run; empty when several may
    int tooYoung = 0;                  ///< files that were left out because they may still be growing
    int unreadableFolders = 0;         ///< whose files the plan had to leave out
    int outputsPerFile = 1;            ///< how many results the sequence writes for a file
    std::vector<std::string> warnings = {};
};

[[nodiscard]] Json PlanReportJson(const PlanReport& plan);
[[nodiscard]] PlanReport PlanReportFrom(const Json& object);
