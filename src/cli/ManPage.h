// The manual page, made from the command table.
#pragma once

#include <string>

namespace cli {

/// For the "man" macros of troff.
std::string ManPage(const std::string& version);

}  // namespace cli
