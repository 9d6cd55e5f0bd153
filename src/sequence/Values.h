// Values of a step's parameters as texts of the XML form.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "common/SettingsRecord.h"

/// How much of an item's text counts.
inline constexpr std::size_t kMaxItemValueBytes = 1'000'000;

/// The value of an item of the given type word; nothing for an unknown word and for an empty number.
/// Takes at most the first kMaxItemValueBytes of the text, cut between characters.
[[nodiscard]] std::optional<CSettingsRecord::Value> ItemValue(std::string_view type, std::string_view valueUtf8);

/// The word for the type of a value: "boolean", "integer", "double", "text", "string", "atom", "binary", "null", and
/// "cab" for a record.
[[nodiscard]] const char* TypeWord(const CSettingsRecord::Value& value);

/// The number that a text starts with, after white space; 0 when there is none. Always a decimal point, whatever the
/// locale.
[[nodiscard]] double LeadingDouble(std::string_view text);

/// Whether the first key stands before the second in a cab: keys of digits first, by number, then the others by
/// bytes.
[[nodiscard]] bool ComesFirstInCab(const std::string& key, const std::string& other);
