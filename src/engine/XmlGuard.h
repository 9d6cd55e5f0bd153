// A look at the raw bytes of an XML file before a recursive parser sees them.
#pragma once

#include "base/Expected.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

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
