// ferrule report: what records of runs come to; and the same at the end of a run.
#pragma once

#include <string>

#include "cli/Arguments.h"
#include "cli/Console.h"
#include "supervisor/RunObserver.h"

class CRunSums;

namespace cli {

int ReportCommand(const CArguments& arguments, const Screen& screen);

/// The place of --report, as an absolute path; empty without it. Fails: it cannot be written there, or the command
/// does nothing that could be reported.
std::string ReportPlace(const CArguments& arguments);
/// Adds how the run ended and writes the page; a failure is told and changes nothing of how the run came out.
/// Writes nothing of a run that did not come to a plan.
void WriteReportOfRun(CRunSums& sums, const RunResult& result, const std::string& path, const CArguments& arguments,
                      const Screen& screen);

/// The report for a terminal: lines, each with its end.
std::string ReportText(const CRunSums& sums);

}  // namespace cli
