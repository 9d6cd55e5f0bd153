// What "ferrule generate" writes, made from the command table: completions for shells, and the manual page.
#pragma once

#include <string>

namespace cli {

std::string BashCompletion();
std::string ZshCompletion();
std::string FishCompletion();

/// For the "man" macros of troff.
std::string ManPage(const std::string& version);

}  // namespace cli
