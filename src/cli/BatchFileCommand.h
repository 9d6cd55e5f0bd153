// "batchfile": the file that starts an unattended run. A job makes it; see jobs/BatchFileJob.h.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

int BatchFileCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
