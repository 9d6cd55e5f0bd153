// "protect": gives many documents passwords and restrictions, as a run like any other.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

int ProtectCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
