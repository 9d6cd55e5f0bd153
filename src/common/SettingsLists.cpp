#include "common/SettingsLists.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace {

constexpr std::string_view kNumItems = "NumItems";

/// The greatest key that is a number; -1 when there is none.
std::int64_t LastNumber(const CSettingsRecord& list)
{
    std::int32_t last = -1;
    for (const auto& entry : list.Entries()) {
        std::int32_t number = -1;
        const char* const end = entry.key.data() + entry.key.size();
        const auto [stop, error] = std::from_chars(entry.key.data(), end, number);
        if (error == std::errc() && stop == end) last = std::max(last, number);
    }
    return last;
}

}  // namespace

TextPairs ReadMap(const CSettingsRecord& record, std::string_view key)
{
    TextPairs pairs;
    const auto* map = record.Record(key);
    if (!map) return pairs;
    const std::int32_t stored = map->Int(kNumItems, 0);
    const std::int64_t last = LastNumber(*map);
    for (std::int64_t i = 0; i < stored && i <= last; i += 2) {
        const std::string name = std::to_string(i);
        if (map->Known(name)) pairs.emplace_back(map->AnyText(name), map->AnyText(std::to_string(i + 1)));
    }
    return pairs;
}

void PutMap(CSettingsRecord& record, std::string_view key, const TextPairs& pairs)
{
    CSettingsRecord map;
    map.PutInt(kNumItems, static_cast<std::int32_t>(2 * pairs.size()));
    std::size_t next = 0;
    for (const auto& [name, value] : pairs)
        for (const std::string& text : {name, value}) map.PutString(std::to_string(next++), text);
    record.PutRecord(key, std::move(map));
}

SettingsRectangle ReadRectangle(const CSettingsRecord& record, std::string_view key,
                                const SettingsRectangle& fallback)
{
    const auto* stored = record.Record(key);
    if (!stored) return fallback;
    return {stored->Double("Left", fallback.left), stored->Double("Right", fallback.right),
            stored->Double("Top", fallback.top), stored->Double("Bottom", fallback.bottom)};
}

void PutRectangle(CSettingsRecord& record, std::string_view key, const SettingsRectangle& rectangle)
{
    CSettingsRecord stored;
    stored.PutDouble("Left", rectangle.left);
    stored.PutDouble("Right", rectangle.right);
    stored.PutDouble("Top", rectangle.top);
    stored.PutDouble("Bottom", rectangle.bottom);
    record.PutRecord(key, std::move(stored));
}
