// The commands that process files: run, plan, merge.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

/// All answer the exit code and throw CCommandError when the command does not begin.
int RunCommand(const CArguments& arguments, const Screen& screen);
int PlanCommand(const CArguments& arguments, const Screen& screen);
int MergeCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
