// How the text of an item becomes a value.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "engine/WorkflowModel.h"

/// How much of an item's text counts.
inline constexpr std::size_t kMaxItemValueBytes = 1'000'000;

/// The value of an item of the given type word; nothing for an unknown word and for an empty number.
/// Takes at most the first kMaxItemValueBytes of the text, cut between characters.
[[nodiscard]] std::optional<WorkflowValue> ItemValue(std::string_view type, std::string_view valueUtf8);

/// Bytes of a Base64 text. Characters outside the alphabet are skipped, padding included; a last group of two or
/// three characters yields one or two bytes, a single character none.
[[nodiscard]] std::string DecodeBase64(std::string_view text);

/// The number that a text starts with, after white space; 0 when there is none. Always a decimal point, whatever the
/// locale.
[[nodiscard]] double LeadingDouble(std::string_view text);
