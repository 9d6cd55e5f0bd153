#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "hostapi/HostConstants.h"
#include "hostapi/HostTypes.h"

namespace openhost {

inline constexpr ASAtom kNullAtom = 0xFFFF;

/// Texts that are compared by number. The same text has the same number until the host ends; the null atom belongs to
/// the empty text.
class CAtoms {
public:
    /// Raises genErrNoMemory when all 65535 numbers are used up.
    ASAtom FromText(std::string_view text);
    /// The text, valid until the host ends; null for a number that was never given out.
    const char* Text(ASAtom atom) const;
    bool Known(std::string_view text) const { return text.empty() || m_numbers.contains(std::string(text)); }

private:
    std::deque<std::string> m_texts;  // a deque keeps its elements in place
    std::unordered_map<std::string, ASAtom> m_numbers;
};

/// Short forms over the running host's atoms.
ASAtom AtomFromText(std::string_view text);
std::string AtomText(ASAtom atom);

}  // namespace openhost
