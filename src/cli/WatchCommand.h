// The command that watches a folder.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

/// Answers the exit code and throws CCommandError when the command does not begin.
int WatchCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
