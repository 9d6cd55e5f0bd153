// The parser behind its guard.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

class TiXmlElement;

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

/// An element of a text, for as long as its visit lasts.
struct VisitedElement {
    const TiXmlElement& element;
    int depth;        // 1 for the root element
    TextPlace start;  // from where the places of the element, and of all that is in it, count
};

/// Visits the root element and its children with nothing in them, and whole what is in those children, in the order of
/// the text. So the tree of a long text is never in memory as a whole. Stops when `visit` answers false. Answers what
/// is wrong with the text, before the first visit as far as the guard sees it; nothing when nothing is.
[[nodiscard]] std::optional<XmlFault> WalkGuardedXml(std::string_view bytes,
                                                     const std::function<bool(const VisitedElement&)>& visit);

/// One sentence for the log; the parser's own ones with the line.
[[nodiscard]] std::string FaultSentence(const XmlFault& fault);

[[nodiscard]] bool IsNamed(const TiXmlElement& element, const char* name);
/// The attribute's value; empty when there is none.
[[nodiscard]] std::string AttributeText(const TiXmlElement& element, const char* name);

/// The place of an element whose parser counted `row` and `column` from `start`.
[[nodiscard]] TextPlace PlaceFrom(TextPlace start, int row, int column);
