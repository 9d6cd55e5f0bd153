// Standard output and standard error, and the one line at the bottom of the terminal that is drawn anew.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

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

}  // namespace cli
