// Names as the host's atoms.
#pragma once

#include "hostapi/HostTypes.h"

#include <string>

inline constexpr ASAtom kNullAtom = 0xFFFF;

/// The atom of a text; the same text always gives the same atom.
[[nodiscard]] ASAtom Atom(const std::string& text);

/// The text of an atom; empty for the null atom and for one that was never made.
[[nodiscard]] std::string AtomText(ASAtom atom);
