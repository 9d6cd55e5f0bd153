// Sentences and tables about a run.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "report/ReportFigures.h"
#include "supervisor/RunObserver.h"

namespace cli {

class CRunPrinter;

using ::Bytes;
using ::Counted;

/// "10,000 files, 1.2 GB, 3 of them already done"
std::string PlanSentence(const PlanSummary& plan);

/// What a trial run says about one file: the input, what would come out, and what would become of the input.
std::string PretendedText(const FileRecord& record);

/// A file that is not fine and why, on one line.
std::string UnfineText(const std::string& path, FileOutcome outcome, const std::string& message);

struct SummaryFacts {
    bool dryRun = false;
    bool canResume = true;  ///< --resume goes on with this run
    std::string kept;       ///< where to find more of the files that are not fine; empty: nowhere
};

/// The lines at the end of a run for people, each with a line end.
std::string SummaryText(const RunResult& result, const CRunPrinter& printer, const SummaryFacts& facts);
/// What takes its place where only what went wrong is wanted; empty when nothing did.
std::string TroubleText(const RunResult& result, const CRunPrinter& printer, const SummaryFacts& facts);
/// The same for programs: one JSON object without line end.
std::string SummaryJson(const RunResult& result);

}  // namespace cli
