// The command that shows and clears the log.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

int LogCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
