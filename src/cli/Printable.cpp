#include "cli/Printable.h"

#include "common/Text.h"

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

}  // namespace cli
