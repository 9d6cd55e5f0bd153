// The XML parser behind a guard that looks at the raw bytes before a recursive parser sees them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "sequence/Findings.h"

struct XmlLimits {
    std::uint64_t bytes = 64u * 1024 * 1024;
    int depth = 100;
    int elements = 4'000'000;
    int attributesOfOneElement = 100;
};

/// Where an element stands, in bytes from the start of the text: its first tag ends at `tagEnd`, the whole at `end`.
struct XmlPart {
    int depth;  // 1 for the root element
    std::size_t begin, tagEnd, end;
};

/// The elements down to this depth are told apart by a check: a long text has its many elements on this level.
inline constexpr int kOutlineDepth = 3;

/// Answers the part of the bytes that may be parsed (behind byte order mark and XML declaration), or why nothing may.
///
/// Accepts UTF-8 text whose tags and quotes are balanced within the limits; what an XML declaration says about the
/// encoding has no effect. Document types and entity declarations are refused, and so are references to characters
/// that do not exist. Runs in one pass, without recursion. `faultAt`, when given, learns at which byte a refused text
/// is refused; npos when it is as a whole. `outline`, when given, gets the elements down to kOutlineDepth in the
/// order in which they begin.
[[nodiscard]] Expected<std::string_view> CheckedXml(std::string_view bytes, const XmlLimits& limits = {},
                                                    std::size_t* faultAt = nullptr,
                                                    std::vector<XmlPart>* outline = nullptr);

class TiXmlElement;

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

/// Visits the root element and its children with nothing in them, and whole what is in those children, in the order
/// of the text. So the tree of a long text is never in memory as a whole. Stops when `visit` answers false. Answers
/// what is wrong with the text, before the first visit as far as the guard sees it; nothing when nothing is.
[[nodiscard]] std::optional<XmlFault> WalkGuardedXml(std::string_view bytes,
                                                     const std::function<bool(const VisitedElement&)>& visit);

/// One sentence for the log; the parser's own ones with the line.
[[nodiscard]] std::string FaultSentence(const XmlFault& fault);

[[nodiscard]] bool IsNamed(const TiXmlElement& element, const char* name);
/// The attribute's value; empty when there is none.
[[nodiscard]] std::string AttributeText(const TiXmlElement& element, const char* name);

/// The place of an element whose parser counted `row` and `column` from `start`.
[[nodiscard]] TextPlace PlaceFrom(TextPlace start, int row, int column);
