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

/// A text that comes in pieces, with the tabs and line ends that it is made of.
class CPrintableText {
public:
    /// The next piece. What may be the first half of a line end or a character waits for the piece behind it.
    std::string Next(std::string_view piece);
    /// What still waits.
    std::string Rest();

private:
    std::string m_held;
};

}  // namespace cli
