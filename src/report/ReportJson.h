// The report for programs.
#pragma once

#include <string>

#include "report/RunSums.h"

/// One JSON object without line end; see docs/runs.md.
[[nodiscard]] std::string ReportJson(const CRunSums& sums);
