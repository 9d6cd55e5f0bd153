// The command that takes a run back.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

/// Answers the exit code and throws CCommandError when the command does not begin.
int UndoCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
