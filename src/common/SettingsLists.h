#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/SettingsRecord.h"

// Conventions on top of the plain values of a settings record.

/// A map is a record whose "NumItems" counts texts, not pairs: key and value of a pair stand under neighbouring
/// numbers (0 and 1, 2 and 3, ...), the last value also when an odd count ends before it. A key without a value has
/// an empty one. The order of the pairs is kept.
using TextPairs = std::vector<std::pair<std::string, std::string>>;
TextPairs ReadMap(const CSettingsRecord& record, std::string_view key);
void PutMap(CSettingsRecord& record, std::string_view key, const TextPairs& pairs);

struct SettingsRectangle {
    double left = 0, right = 0, top = 0, bottom = 0;
    bool operator==(const SettingsRectangle&) const = default;
};
SettingsRectangle ReadRectangle(const CSettingsRecord& record, std::string_view key,
                                const SettingsRectangle& fallback);
void PutRectangle(CSettingsRecord& record, std::string_view key, const SettingsRectangle& rectangle);
