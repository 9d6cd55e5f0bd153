#include "engine/GuardedXml.h"

#include "engine/XmlGuard.h"

#include <tinyxml.h>
#include <cstring>
#include <cstddef>
#include <vector>

namespace {

bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

/// The places of bytes that are asked for from front to back. A line ends with a line feed, a carriage return, or both.
class CPlaces {
public:
    explicit CPlaces(std::string_view bytes) : m_bytes(bytes), m_at(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0) {}

    TextPlace Of(std::size_t at)
    {
        for (; m_at < at && m_at < m_bytes.size(); ++m_at) {
            const char c = m_bytes[m_at];
            const bool halfOfTwo = c == '\r' && m_at + 1 < m_bytes.size() && m_bytes[m_at + 1] == '\n';
            if ((c == '\n' || c == '\r') && !halfOfTwo)
                m_place = {m_place.line + 1, 1};
            else if (!ContinuesCharacter(c))
                ++m_place.column;
        }
        return m_place;
    }

private:
    std::string_view m_bytes;
    std::size_t m_at;
    TextPlace m_place{1, 1};
};

/// What is parsed of an element: all of it, or its first tag, closed.
std::string TextOf(std::string_view bytes, const XmlPart& part)
{
    if (part.depth == kOutlineDepth) return std::string(bytes.substr(part.begin, part.end - part.begin));
    std::string tag(bytes.substr(part.begin, part.tagEnd - part.begin));
    if (!tag.ends_with("/>")) tag.insert(tag.size() - 1, "/");
    return tag;
}

}  // namespace

std::optional<XmlFault> WalkGuardedXml(std::string_view bytes, const std::function<bool(const VisitedElement&)>& visit)
{
    CPlaces places(bytes);
    std::size_t faultAt = 0;
    std::vector<XmlPart> outline;
    if (const auto checked = CheckedXml(bytes, {}, &faultAt, &outline); !checked)
        return XmlFault{checked.Error(), faultAt == bytes.npos ? TextPlace{} : places.Of(faultAt)};
    for (const XmlPart& part : outline) {
        const TextPlace start = places.Of(part.begin);
        TiXmlDocument document;
        document.SetTabSize(1);
        document.Parse(TextOf(bytes, part).c_str(), nullptr, TIXML_ENCODING_UTF8);
        if (document.Error() || !document.RootElement())
            return XmlFault{document.ErrorDesc(), PlaceFrom(start, document.ErrorRow(), document.ErrorCol()), true};
        if (!visit({*document.RootElement(), part.depth, start})) break;
    }
    return std::nullopt;
}

std::string FaultSentence(const XmlFault& fault)
{
    return fault.byParser ? fault.sentence + " (line " + std::to_string(fault.place.line) + ")" : fault.sentence;
}

bool IsNamed(const TiXmlElement& element, const char* name) { return std::strcmp(element.Value(), name) == 0; }

std::string AttributeText(const TiXmlElement& element, const char* name)
{
    const std::string* value = element.Attribute(std::string(name));
    return value ? *value : std::string();
}

TextPlace PlaceFrom(TextPlace start, int row, int column)
{
    if (row <= 0) return {};
    return {start.line + row - 1, row == 1 ? start.column + column - 1 : column};
}
