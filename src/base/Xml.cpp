#include "base/Xml.h"

#include <charconv>
#include <cstdint>
#include <optional>

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

/// What stands between "&" and ";"; nothing when it is no reference.
std::optional<char32_t> Referenced(std::string_view name)
{
    if (!name.starts_with('#')) {
        for (const XmlReference& reference : kReferences)
            if (name == std::string_view(reference.text).substr(1, std::string_view(reference.text).size() - 2))
                return reference.character;
        return std::nullopt;
    }
    const bool isHexadecimal = name.starts_with("#x");
    name.remove_prefix(isHexadecimal ? 2 : 1);
    std::uint32_t number = 0;
    const auto [end, error] =
        std::from_chars(name.data(), name.data() + name.size(), number, isHexadecimal ? 16 : 10);
    const bool whole = error == std::errc() && end == name.data() + name.size();
    return whole && IsXmlCharacter(number) ? std::optional<char32_t>(number) : std::nullopt;
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

std::string XmlUnescaped(std::string_view xml)
{
    constexpr std::size_t kLongestReference = 12;
    std::string text;
    for (std::size_t at = 0; at < xml.size(); ++at) {
        const std::size_t end = xml[at] == '&' ? xml.find(';', at) : xml.npos;
        const auto character = end != xml.npos && end - at <= kLongestReference
                                   ? Referenced(xml.substr(at + 1, end - at - 1))
                                   : std::nullopt;
        if (character) {
            AppendUtf8(text, *character);
            at = end;
        } else {
            text += xml[at];
        }
    }
    return text;
}
