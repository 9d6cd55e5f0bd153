#include "cli/Console.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "base/Text.h"
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

namespace {

/// The control characters beyond ASCII are two bytes of UTF-8: C2 80 to C2 9F.
bool IsWideControl(std::string_view text, std::size_t at)
{
    return text[at] == '\xC2' && at + 1 < text.size() && (static_cast<unsigned char>(text[at + 1]) & 0xE0) == 0x80;
}

}  // namespace

std::string ShownPath(const std::string& path)
{
    static const std::string here = platform::AbsolutePath(".");
    const bool below = path.size() > here.size() + 1 && path.starts_with(here) &&
                       (path[here.size()] == '/' || path[here.size()] == '\\');
    return Printable(below ? path.substr(here.size() + 1) : path);
}

std::string Printable(std::string_view text)
{
    std::string printable;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const unsigned char byte = static_cast<unsigned char>(text[at]);
        if (byte == '\n')
            printable += "\\n";
        else if (byte == '\t')
            printable += "\\t";
        else if (byte < 0x20 || byte == 0x7F)
            printable += FormatText("\\x%02x", byte);
        else if (IsWideControl(text, at))
            printable += FormatText("\\x%02x", static_cast<unsigned char>(text[++at]));
        else
            printable += text[at];
    }
    return printable;
}

std::string PrintableLines(std::string_view text)
{
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) return Printable(text);
    return Printable(text.substr(0, end)) + "\n" + PrintableLines(text.substr(end + 1));
}

std::string CPrintableText::Next(std::string_view piece)
{
    std::string text = std::exchange(m_held, {}) + std::string(piece), printable;
    if (text.ends_with('\r') || text.ends_with('\xC2')) {
        m_held = text.back();
        text.pop_back();
    }
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find_first_of("\t\n", at), text.size());
        const bool lineEnd = end < text.size() && text[end] == '\n' && end > at && text[end - 1] == '\r';
        printable += Printable(std::string_view(text).substr(at, end - at - (lineEnd ? 1 : 0)));
        if (lineEnd) printable += '\r';
        if (end < text.size()) printable += text[end];
        at = end + 1;
    }
    return printable;
}

std::string CPrintableText::Rest() { return Printable(std::exchange(m_held, {})); }

}  // namespace cli
