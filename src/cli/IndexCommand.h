// "index": full-text indexes of folders.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

int IndexCreateCommand(const CArguments& arguments, const Screen& screen);
int IndexBuildCommand(const CArguments& arguments, const Screen& screen);
int IndexPurgeCommand(const CArguments& arguments, const Screen& screen);
int IndexStatusCommand(const CArguments& arguments, const Screen& screen);
/// 0: something was found, 1: nothing, 2: the index could not be searched.
int IndexSearchCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
