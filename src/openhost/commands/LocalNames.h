#pragma once

#include <optional>
#include <string_view>

#include "openhost/pdf/OpenSettings.h"

namespace openhost {

// Numbers as the user interfaces of many languages write them: digits of any of the usual scripts, with spaces,
// points, commas or apostrophes in them. All texts are UTF-8.

/// A number whose meaning does not hang on the language: "36.5", "1,234.5", "36,5", but not "1,234".
std::optional<double> ReadClearNumber(std::string_view text);

/// A whole number without any separator.
std::optional<int> ReadWholeNumber(std::string_view text);

/// A zoom in percent, its sign at either end or missing: "125%", "66,7 %", "%150". What could be thousands counts as
/// such up to `most`: "1.600 %".
std::optional<double> ReadPercentage(std::string_view text, double most);

/// The view that a sequence names: a percentage, or a name as the user interface of one of the usual languages has
/// it. Case and spaces do not count. UTF-8. Nothing for a name that is not known.
std::optional<OpenView> ViewNamed(std::string_view name);

}  // namespace openhost
