#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace openhost {

struct XmlAttribute {
    std::string_view name, value;  ///< value as written, between its quotes
    std::size_t begin = 0;         ///< from the blank before it ...
    std::size_t end = 0;           ///< ... to behind its closing quote
};

/// An element of a text, by places in it.
struct XmlElement {
    std::string_view name;  ///< with its prefix
    std::size_t begin = 0;  ///< of the opening tag
    std::size_t content = 0;
    std::size_t contentEnd = 0;
    std::size_t end = 0;  ///< behind the closing tag
    std::optional<std::size_t> parent;
    std::vector<XmlAttribute> attributes;
};

/// All elements in the order of their opening tags. Nothing when tags do not pair, anything is cut off, the text
/// declares entities, or nests deeper than 100.
std::optional<std::vector<XmlElement>> ReadXmlElements(std::string_view text);

/// Which namespace the prefix of a name means there; attributes without a prefix have none.
std::string_view XmlNamespace(const std::vector<XmlElement>& elements, std::size_t at, std::string_view name);

/// A name without its prefix.
std::string_view XmlLocalName(std::string_view name);

/// Text as it stands inside an element; characters that XML cannot hold are left out.
std::string XmlEscaped(std::string_view utf8);

}  // namespace openhost
