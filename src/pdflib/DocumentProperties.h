// The properties of documents, as tables of many documents show them.
#pragma once

#include <string>
#include <vector>

#include "pdflib/AcrobatDoc.h"

/// The texts of all columns (protocol/Metadata.h) and then of the entries with these keys, UTF-8. What cannot be read
/// is empty, the time of modification then "Unknown".
[[nodiscard]] std::vector<std::string> ReadDocumentProperties(const CAcrobatDoc& document,
                                                              const std::vector<std::string>& keys);
