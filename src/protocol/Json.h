// Reading and writing JSON of manifest, journal, record and messages.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "protocol/JsonType.h"

/// Nothing when the text is no JSON object. Never throws.
[[nodiscard]] std::optional<Json> ParseObject(std::string_view text);
/// One line, without line end. Texts that are not valid UTF-8 are repaired rather than refused.
[[nodiscard]] std::string LineOf(const Json& value);
/// The same with the keys of each object in alphabetical order.
[[nodiscard]] std::string SortedLineOf(const Json& value);

// What a key holds; the empty value, 0 or false when it is absent or of another type.
[[nodiscard]] std::string TextAt(const Json& object, const char* key);
/// A text that stands for bytes, see base/Text.h.
[[nodiscard]] std::string BytesAt(const Json& object, const char* key);
[[nodiscard]] std::int64_t IntegerAt(const Json& object, const char* key);
[[nodiscard]] std::uint64_t UnsignedAt(const Json& object, const char* key);
/// Nothing when it is absent or no such number.
[[nodiscard]] std::optional<std::uint64_t> MaybeUnsignedAt(const Json& object, const char* key);
/// A text that is a number, for those that are too large for some readers of JSON.
[[nodiscard]] std::int64_t DecimalAt(const Json& object, const char* key);
/// An integer that is a count or a number of a file; 0 when it is not between 0 and the largest int.
[[nodiscard]] int CountAt(const Json& object, const char* key);
/// `fallback`: when it is absent or no boolean.
[[nodiscard]] bool FlagAt(const Json& object, const char* key, bool fallback = false);
/// Null when it is absent or no array.
[[nodiscard]] const Json* ArrayAt(const Json& object, const char* key);
[[nodiscard]] std::vector<std::string> TextsAt(const Json& object, const char* key);
[[nodiscard]] std::vector<std::string> BytesListAt(const Json& object, const char* key);
/// An array of texts that stand for bytes.
[[nodiscard]] Json TextsOf(const std::vector<std::string>& bytes);
/// An empty object when it is absent.
[[nodiscard]] const Json& ObjectAt(const Json& object, const char* key);

/// Why the first line of a file is not the header of a format ("manifest", "journal") in this version.
[[nodiscard]] std::string HeaderProblem(const std::string& path, const char* format, int version,
                                        const std::string& line);
