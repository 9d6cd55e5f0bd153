#pragma once

#include <string>

#include "hostapi/HostTypes.h"

// The objects that a document is made of. Everything throws CHostException when the host raises. Handles are valid
// until the document is saved or closed.

/// The dictionary at the top of the document.
[[nodiscard]] CosObj RootOf(PDDoc document);
[[nodiscard]] bool IsDictionary(CosObj object);
/// An entry of a dictionary, by its key without slash; the null object when there is none.
[[nodiscard]] CosObj EntryOf(CosObj dictionary, const std::string& key);
/// Whether this is a dictionary that has the entry.
[[nodiscard]] bool HasEntry(CosObj dictionary, const std::string& key);
