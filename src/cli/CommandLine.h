// The whole program but for main().
#pragma once

#include <string>
#include <vector>

#include "cli/Console.h"

namespace cli {

/// `words`: the arguments without the program's name. Answers the exit code; throws nothing.
int RunCommandLine(const std::vector<std::string>& words, const Screen& screen);

}  // namespace cli
