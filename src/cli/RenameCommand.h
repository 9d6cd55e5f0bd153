// "rename": gives many files new names, as a run like any other.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

int RenameCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
