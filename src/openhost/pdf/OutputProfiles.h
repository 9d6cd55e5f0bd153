// The colour profiles of a document's output intents, which archived documents carry. They say nothing about text,
// but libraries that draw pages make a table of colours from them anew for each page: on small documents that takes a
// fifth of the time in which a page's text is read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "openhost/pdf/PdfDocument.h"

namespace openhost {

/// Where the profiles stand in the file, as offsets in bytes; as they are stored, compressed and encrypted. Empty
/// when the document has none, or when its file is so large that it is not to be held in memory for their sake.
std::vector<std::uint64_t> OutputProfilesIn(CPdfDocument& document);

/// Makes profiles of these bytes unreadable, so that readers go without them. An offset at which no stream begins is
/// left out: the file may have changed, or may have something in front of its header.
void SpoilOutputProfiles(std::string& bytes, const std::vector<std::uint64_t>& offsets);

}  // namespace openhost
