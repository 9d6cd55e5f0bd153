#include "cli/Console.h"

#include <iostream>

#include "platform/Clock.h"
#include "platform/Paths.h"
#include "platform/ThisProcess.h"

namespace cli {

namespace {

constexpr std::uint64_t kRedrawMs = 100;
constexpr std::uint64_t kPlainLineMs = 5000;
constexpr char kClearLine[] = "\r\x1b[K";

}  // namespace

Screen MakeScreen()
{
    Screen screen{&std::cout, &std::cerr, false, false, {}, {}};
    screen.terminal = platform::TakesControlCodes(platform::StandardStream::Error);
    screen.colour = screen.terminal && platform::EnvironmentText("NO_COLOR").empty();
    screen.width = [] { return static_cast<std::size_t>(platform::TerminalWidth(platform::StandardStream::Error)); };
    screen.milliseconds = platform::MonotonicMilliseconds;
    screen.dataTerminal = platform::IsTerminal(platform::StandardStream::Output);
    return screen;
}

void CStatusLine::Message(const std::string& text)
{
    Clear();
    *m_screen.messages << text << '\n' << std::flush;
}

void CStatusLine::Show(const std::function<std::string(std::size_t)>& bar,
                       const std::function<std::string()>& sentence)
{
    const std::uint64_t now = m_screen.milliseconds();
    if (!m_any && !m_screen.terminal) m_lastMs = now;
    const bool due = now - m_lastMs >= (m_screen.terminal ? kRedrawMs : kPlainLineMs);
    if (m_any && !due) return;
    const bool first = !m_any;
    m_any = true;
    if (!m_screen.terminal && first) return;  // a short run needs no such line
    m_lastMs = now;
    if (m_screen.terminal) {
        // One column stays free: terminals break the line when the last one is written.
        const std::size_t width = m_screen.width();
        *m_screen.messages << kClearLine << bar(width > 1 ? width - 1 : 0) << std::flush;
        m_shown = true;
    } else {
        *m_screen.messages << "ferrule: " << sentence() << '\n' << std::flush;
    }
}

void CStatusLine::Clear()
{
    if (m_shown) *m_screen.messages << kClearLine << std::flush;
    m_shown = false;
}

}  // namespace cli
