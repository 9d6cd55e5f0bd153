// Standard output and standard error: the one line at the bottom of the terminal that is drawn anew, and texts of
// others made fit to be shown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace cli {

/// What the program can write to; replaced in tests.
struct Screen {
    std::ostream* data;      ///< standard output, borrowed
    std::ostream* messages;  ///< standard error, borrowed
    bool terminal = false;   ///< messages go to a terminal that can draw a line anew
    bool colour = false;
    std::function<std::size_t()> width;           ///< of that terminal, in columns
    std::function<std::uint64_t()> milliseconds;  ///< of a clock that never goes back
    bool dataTerminal = false;                    ///< data go to a terminal of any kind
};

/// The real one.
Screen MakeScreen();

/// Messages above a status line. The line is drawn a few times a second; without a terminal it is written as a line
/// of its own every few seconds.
class CStatusLine {
public:
    explicit CStatusLine(const Screen& screen) : m_screen(screen) {}
    CStatusLine(const CStatusLine&) = delete;
    CStatusLine& operator=(const CStatusLine&) = delete;
    ~CStatusLine() { Clear(); }

    /// Writes a whole line; the status line comes back with the next Show.
    void Message(const std::string& text);
    /// Called as often as one likes. `bar` makes the text for a terminal of so many columns, `sentence` the other
    /// one; only the one that is due is called.
    void Show(const std::function<std::string(std::size_t)>& bar, const std::function<std::string()>& sentence);
    /// Takes the status line off the terminal.
    void Clear();

private:
    const Screen& m_screen;
    bool m_shown = false;
    bool m_any = false;
    std::uint64_t m_lastMs = 0;
};

// Texts of others on a terminal.

/// The same text with control characters spelled out ("\n", "\x1b"), so that a file name or a value can neither break
/// lines nor steer the terminal.
std::string Printable(std::string_view text);
/// The same for a text that may have several lines.
std::string PrintableLines(std::string_view text);
/// The same for a path, without the folder that people are in.
std::string ShownPath(const std::string& path);

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
