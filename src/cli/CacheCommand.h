// "cache status" and "cache clear": what is kept of documents that were read.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

int CacheStatusCommand(const CArguments& arguments, const Screen& screen);
int CacheClearCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
