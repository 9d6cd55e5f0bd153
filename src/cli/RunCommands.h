// The commands that process files: run, plan, merge; protect has a file of its own.
#pragma once

#include <functional>
#include <string>

#include "cli/Arguments.h"
#include "cli/Console.h"
#include "supervisor/RunOptions.h"

namespace cli {

using RecordTaker = std::function<void(const std::string& json)>;

/// All answer the exit code and throw CCommandError when the command does not begin.
int RunCommand(const CArguments& arguments, const Screen& screen);
int PlanCommand(const CArguments& arguments, const Screen& screen);
int MergeCommand(const CArguments& arguments, const Screen& screen);

/// Each worker costs open files; with too few allowed there are fewer workers, which is said. Fails when there is not
/// room for one.
void FitWorkers(EngineOptions& engine, const CArguments& arguments, const Screen& screen);

/// Does a whole run and reports on it as "run" does, as far as the command has these options. The exit code.
/// `goesOn`: whether the same command goes on with the run, by --resume.
/// `onRecord` gets the lines of the record, in input order.
int RunAndReport(RunOptions options, const CArguments& arguments, const Screen& screen, bool goesOn = true,
                 RecordTaker onRecord = {});

}  // namespace cli
