#include "engine/GuardedXml.h"

#include "engine/XmlGuard.h"

#include <tinyxml.h>
#include <cstddef>

namespace {

bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

/// The place of a byte. A line ends with a line feed, a carriage return, or both.
TextPlace PlaceOfByte(std::string_view bytes, std::size_t at)
{
    TextPlace place{1, 1};
    std::size_t lineStart = bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    for (std::size_t i = lineStart; i < at && i < bytes.size(); ++i) {
        const bool halfOfTwo = bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n';
        if ((bytes[i] != '\n' && bytes[i] != '\r') || halfOfTwo) continue;
        ++place.line;
        lineStart = i + 1;
    }
    for (std::size_t i = lineStart; i < at && i < bytes.size(); ++i)
        if (!ContinuesCharacter(bytes[i])) ++place.column;
    return place;
}

}  // namespace

std::optional<XmlFault> ParseGuardedXml(std::string_view bytes, TiXmlDocument& document, TextPlace* start)
{
    std::size_t faultAt = 0;
    const auto checked = CheckedXml(bytes, {}, &faultAt);
    if (!checked) return XmlFault{checked.Error(), faultAt == bytes.npos ? TextPlace{} : PlaceOfByte(bytes, faultAt)};
    const TextPlace from = PlaceOfByte(bytes, static_cast<std::size_t>(checked->data() - bytes.data()));
    if (start) *start = from;
    document.SetTabSize(1);
    document.Parse(std::string(*checked).c_str(), nullptr, TIXML_ENCODING_UTF8);
    if (!document.Error()) return std::nullopt;
    return XmlFault{document.ErrorDesc(), PlaceFrom(from, document.ErrorRow(), document.ErrorCol()), true};
}

std::string FaultSentence(const XmlFault& fault)
{
    return fault.byParser ? fault.sentence + " (line " + std::to_string(fault.place.line) + ")" : fault.sentence;
}

TextPlace PlaceFrom(TextPlace start, int row, int column)
{
    if (row <= 0) return {};
    return {start.line + row - 1, row == 1 ? start.column + column - 1 : column};
}
