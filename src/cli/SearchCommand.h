// "search" and "text": what stands in documents.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

/// 0: something was found, 1: nothing, 2: a file could not be searched, or nothing could be done at all.
int SearchCommand(const CArguments& arguments, const Screen& screen);
int TextCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
