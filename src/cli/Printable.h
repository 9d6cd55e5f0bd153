// Texts of others on a terminal.
#pragma once

#include <string>
#include <string_view>

namespace cli {

/// The same text with control characters spelled out ("\n", "\x1b"), so that a file name or a value can neither break
/// lines nor steer the terminal.
std::string Printable(std::string_view text);
/// The same for a text that may have several lines.
std::string PrintableLines(std::string_view text);

}  // namespace cli
