// The parser behind its guard.
#pragma once

#include <optional>
#include <string>
#include <string_view>

class TiXmlDocument;

/// A place in a text, counted from 1; columns are characters, a tab is one. Line 0: no place in particular.
struct TextPlace {
    int line = 0, column = 0;
};

/// Why a text is no XML document that we read.
struct XmlFault {
    std::string sentence;
    TextPlace place;
    bool byParser = false;
};

/// Fills the document; what its elements say about their place counts from `start`, when given. Answers what is wrong
/// with the text; nothing when nothing is.
[[nodiscard]] std::optional<XmlFault> ParseGuardedXml(std::string_view bytes, TiXmlDocument& document,
                                                      TextPlace* start = nullptr);

/// One sentence for the log; the parser's own ones with the line.
[[nodiscard]] std::string FaultSentence(const XmlFault& fault);

/// The place of an element whose parser counted `row` and `column` from `start`.
[[nodiscard]] TextPlace PlaceFrom(TextPlace start, int row, int column);
