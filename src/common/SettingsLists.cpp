#include "common/SettingsLists.h"

#include <algorithm>
#include <charconv>
#include <variant>

namespace {

constexpr std::string_view kNumItems = "NumItems";

// The texts under "0", "1", ... up to the stored count, which is not trusted beyond the entries that exist.
std::vector<std::string> ReadItems(const CSettingsRecord& list)
{
    std::vector<std::string> items;
    const std::int32_t stored = list.Int(kNumItems, 0);
    const auto present = static_cast<std::int32_t>(list.Entries().size());
    for (std::int32_t i = 0; i < stored && i < present; ++i) {
        items.push_back(list.AnyText(std::to_string(i)));
    }
    return items;
}

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

CSettingsRecord MakeList(const std::vector<std::string>& items)
{
    CSettingsRecord list;
    list.PutInt(kNumItems, static_cast<std::int32_t>(items.size()));
    for (std::size_t i = 0; i < items.size(); ++i) list.PutString(std::to_string(i), items[i]);
    return list;
}

}  // namespace

std::vector<std::string> ReadList(const CSettingsRecord& record, std::string_view key)
{
    const auto* list = record.Record(key);
    return list ? ReadItems(*list) : std::vector<std::string>();
}

void PutList(CSettingsRecord& record, std::string_view key, const std::vector<std::string>& items)
{
    record.PutRecord(key, MakeList(items));
}

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
    std::vector<std::string> items;
    for (const auto& [name, value] : pairs) {
        items.push_back(name);
        items.push_back(value);
    }
    PutList(record, key, items);
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

std::string ReadWideOrNarrow(const CSettingsRecord& record, std::string_view keyW, std::string_view fallbackUtf8)
{
    const auto narrowKey = keyW.ends_with('W') ? keyW.substr(0, keyW.size() - 1) : keyW;
    const auto* narrow = record.Find(narrowKey);
    if (narrow && std::holds_alternative<std::string>(*narrow)) return std::get<std::string>(*narrow);
    return record.Wide(keyW, fallbackUtf8);
}
