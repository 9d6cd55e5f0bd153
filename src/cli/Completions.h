// Completions for shells, made from the command table.
#pragma once

#include <string>

namespace cli {

std::string BashCompletion();
std::string ZshCompletion();
std::string FishCompletion();

}  // namespace cli
