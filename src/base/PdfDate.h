// Dates as documents have them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// A date as PDF writes it, "D:20240131093000+01'00'", from one of that form or of ISO 8601 ("2024-01-31",
/// "2024-01-31T09:30:00+01:00", a blank for the T), each cut off behind any part from the year on. Nothing when it is
/// neither, or names a day or time that there is not.
[[nodiscard]] std::optional<std::string> PdfDateFrom(std::string_view text);
