// The report for people: one HTML page that needs nothing from anywhere else.
#pragma once

#include <string>

#include "report/RunSums.h"

/// Pictures are inside, there are no scripts, and the page forbids its reader's browser to fetch anything.
[[nodiscard]] std::string ReportPage(const CRunSums& sums);
