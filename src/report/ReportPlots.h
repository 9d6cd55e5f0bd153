// The pictures of a report, as SVG inside the page. Colours are classes of the page's style.
#pragma once

#include <string>

#include "report/RunSums.h"

/// How the files ended, as one bar.
[[nodiscard]] std::string OutcomeBar(const CRunSums& sums);
/// How many files took so long. `unit`: what the axis is of, "time for a file".
[[nodiscard]] std::string TimeHistogram(const CLogHistogram& histogram, const std::string& unit);
/// Time by size, a dot for the files of one place.
[[nodiscard]] std::string TimePlot(const TimeGrid& grid);
/// The bytes of inputs and results as two bars.
[[nodiscard]] std::string SizeBars(std::uint64_t before, std::uint64_t after);
