#include "base/Xml.h"

#include "base/Unicode.h"

namespace {

struct XmlReference {
    char32_t character;
    const char* text;
    bool inAttributesOnly;
};

/// A reader makes a line feed of a carriage return, and blanks of both and of tabs in attributes.
constexpr XmlReference kReferences[] = {{'&', "&amp;", false},  {'<', "&lt;", false},  {'>', "&gt;", false},
                                        {'\r', "&#xD;", false}, {'"', "&quot;", true}, {'\'', "&apos;", true},
                                        {'\t', "&#x9;", true},  {'\n', "&#xA;", true}};

void AppendEscaped(std::string& xml, char32_t character, bool inAttribute)
{
    for (const XmlReference& reference : kReferences) {
        if (reference.character != character || (reference.inAttributesOnly && !inAttribute)) continue;
        xml += reference.text;
        return;
    }
    AppendUtf8(xml, character);
}

std::string EscapedText(std::string_view utf8, bool inAttribute)
{
    std::string xml;
    xml.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const char32_t character = NextUtf8(utf8, at);
        if (IsXmlCharacter(character)) AppendEscaped(xml, character, inAttribute);
    }
    return xml;
}

}  // namespace

bool IsXmlCharacter(char32_t character)
{
    if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    return !isSurrogate && character != 0xFFFE && character != 0xFFFF && character <= 0x10FFFF;
}

bool IsXmlText(std::string_view bytes)
{
    for (std::size_t at = 0; at < bytes.size();) {
        bool valid = true;
        if (!IsXmlCharacter(NextUtf8(bytes, at, &valid)) || !valid) return false;
    }
    return true;
}

std::string XmlEscaped(std::string_view utf8) { return EscapedText(utf8, false); }
std::string XmlAttributeValue(std::string_view utf8) { return EscapedText(utf8, true); }
