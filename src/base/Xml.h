// Texts as they stand in XML.
#pragma once

#include <string>
#include <string_view>

/// Whether XML 1.0 can hold a character at all; it has no form for most control characters.
[[nodiscard]] bool IsXmlCharacter(char32_t character);
/// Whether the bytes are UTF-8 of such characters only.
[[nodiscard]] bool IsXmlText(std::string_view bytes);

/// A text inside an element. What XML cannot hold is left out.
[[nodiscard]] std::string XmlEscaped(std::string_view utf8);
/// The way back, from inside an element or an attribute; a reference to something unknown stays as it is.
[[nodiscard]] std::string XmlUnescaped(std::string_view xml);
/// The value of an attribute between double quotes; blanks of all kinds come back as they are.
[[nodiscard]] std::string XmlAttributeValue(std::string_view utf8);
