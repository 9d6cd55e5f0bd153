#include "cli/Printable.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace cli {

namespace {

/// The control characters beyond ASCII are two bytes of UTF-8: C2 80 to C2 9F.
bool IsWideControl(std::string_view text, std::size_t at)
{
    return text[at] == '\xC2' && at + 1 < text.size() && (static_cast<unsigned char>(text[at + 1]) & 0xE0) == 0x80;
}

}  // namespace

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
