// Tables by which one text is replaced by another, and their form as text.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "base/Expected.h"

/// Value by key, UTF-8.
using LookupTable = std::map<std::string, std::string, std::less<>>;

/// One entry on each line: key, comma, value. The first comma outside double quotes separates, blanks beside it are
/// dropped, and the rest of the line is the value; quotes around the whole key are no part of it, and one that is
/// never closed is a character like any other. Lines without a comma or without a key count for nothing, and of two
/// entries with one key the last one counts.
[[nodiscard]] LookupTable LookupTableFromText(std::string_view utf8);

/// With CR and LF behind each entry; a key stands in quotes only when it would not be read again without. Line ends
/// within an entry become blanks.
[[nodiscard]] std::string LookupTableText(const LookupTable& table);

struct ImportedLookupTable {
    LookupTable entries;
    std::size_t lines = 0;  ///< that held an entry
    /// "%d line(s) of text loaded."
    [[nodiscard]] std::string Message() const;
};
/// Reads a comma-delimited text file of any character set. Quotes around a whole value are no part of it. Fails with
/// "Cannot open input file." and why, and names the file.
[[nodiscard]] Expected<ImportedLookupTable> ImportLookupTable(const std::string& path);
