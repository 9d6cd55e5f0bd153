#pragma once

#include <string>

#include "hostapi/HostTypes.h"

// The information entries of a document: title, author and whatever else somebody has written there. Keys are names
// without a slash. Everything throws CHostException when the host raises.

/// The text of an entry, UTF-8; empty when there is none. What is no character becomes U+FFFD.
[[nodiscard]] std::string InfoEntry(PDDoc document, const std::string& key);

/// Sets an entry, in PDFDocEncoding or else UTF-16; an empty text takes it away, or leaves an empty entry where the
/// host does not take any away. Takes effect at the next save. Raises: not permitted.
void SetInfoEntry(PDDoc document, const std::string& key, const std::string& utf8);
