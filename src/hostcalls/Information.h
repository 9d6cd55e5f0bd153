#pragma once

#include <string>

#include "hostapi/HostTypes.h"

// The information entries of a document: title, author and whatever else somebody has written there. Keys are names
// without a slash. Everything throws CHostException when the host raises.

/// The text of an entry, UTF-8; empty when there is none. What is no character becomes U+FFFD.
[[nodiscard]] std::string InfoEntry(PDDoc document, const std::string& key);
