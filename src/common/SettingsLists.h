#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/SettingsRecord.h"

// Conventions on top of the plain values of a settings record.

/// A list is a record of "NumItems" and the items under "0", "1", ... An absent list is empty; an item that is
/// missing or of another type reads as an empty text, and "NumItems" beyond the items present is cut to them.
std::vector<std::string> ReadList(const CSettingsRecord& record, std::string_view key);
void PutList(CSettingsRecord& record, std::string_view key, const std::vector<std::string>& items);

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

/// A text stored wide under `keyW` (ends in "W"). Older files hold the same key without the "W" as a narrow text:
/// that one counts first when it exists.
std::string ReadWideOrNarrow(const CSettingsRecord& record, std::string_view keyW,
                             std::string_view fallbackUtf8 = {});
