#include "common/SettingsRecord.h"

#include <algorithm>
#include <charconv>
#include <utility>
#include <variant>

namespace {

template <class T>
const T* Get(const CSettingsRecord& record, std::string_view key)
{
    const auto* value = record.Find(key);
    return value ? std::get_if<T>(value) : nullptr;
}

template <class T, class Default>
T GetOr(const CSettingsRecord& record, std::string_view key, Default fallback)
{
    const T* value = Get<T>(record, key);
    return value ? *value : T(fallback);
}

/// With more entries than these there is an index.
constexpr std::size_t kFewEntries = 16;

}  // namespace

CSettingsRecord& CSettingsRecord::operator=(CSettingsRecord other) noexcept
{
    m_entries.swap(other.m_entries);
    m_places.swap(other.m_places);
    return *this;
}

std::size_t CSettingsRecord::PlaceOf(std::string_view key) const
{
    if (m_places) {
        const auto found = m_places->find(key);
        return found == m_places->end() ? m_entries.size() : found->second;
    }
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) { return entry.key == key; });
    return static_cast<std::size_t>(found - m_entries.begin());
}

void CSettingsRecord::Index()
{
    m_places.reset();
    if (m_entries.size() <= kFewEntries) return;
    m_places = std::make_unique<Places>();
    for (std::size_t place = 0; place < m_entries.size(); ++place) m_places->emplace(m_entries[place].key, place);
}

const CSettingsRecord::Value* CSettingsRecord::Find(std::string_view key) const
{
    const std::size_t place = PlaceOf(key);
    return place == m_entries.size() ? nullptr : &m_entries[place].value;
}

bool CSettingsRecord::Bool(std::string_view key, bool fallback) const { return GetOr<bool>(*this, key, fallback); }

std::int32_t CSettingsRecord::Int(std::string_view key, std::int32_t fallback) const
{
    return GetOr<std::int32_t>(*this, key, fallback);
}

double CSettingsRecord::Double(std::string_view key, double fallback) const
{
    return GetOr<double>(*this, key, fallback);
}

std::string CSettingsRecord::String(std::string_view key, std::string_view fallback) const
{
    return GetOr<std::string>(*this, key, fallback);
}

std::string CSettingsRecord::Wide(std::string_view key, std::string_view fallbackUtf8) const
{
    const auto* text = Get<WideText>(*this, key);
    return text ? text->utf8 : std::string(fallbackUtf8);
}

std::string CSettingsRecord::AnyText(std::string_view key) const
{
    const Value* value = Find(key);
    const std::string* text = value ? TextIn(*value) : nullptr;
    return text ? *text : std::string();
}

std::string CSettingsRecord::Binary(std::string_view key) const
{
    const auto* binary = Get<BinaryValue>(*this, key);
    return binary ? binary->bytes : std::string();
}

const CSettingsRecord* CSettingsRecord::Record(std::string_view key) const
{
    const auto* nested = Get<Nested>(*this, key);
    return nested ? nested->get() : nullptr;
}

void CSettingsRecord::PutValue(std::string_view key, Value value)
{
    const std::size_t place = PlaceOf(key);
    if (place < m_entries.size()) {
        m_entries[place].value = std::move(value);
        return;
    }
    m_entries.push_back({std::string(key), std::move(value)});
    if (m_places) {
        m_places->emplace(key, place);
    } else {
        Index();
    }
}

void CSettingsRecord::PutRecord(std::string_view key, CSettingsRecord record)
{
    PutValue(key, std::make_shared<const CSettingsRecord>(std::move(record)));
}

void CSettingsRecord::Erase(std::string_view key)
{
    const std::size_t place = PlaceOf(key);
    if (place == m_entries.size()) return;
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(place));
    Index();
}

bool CSettingsRecord::operator==(const CSettingsRecord& other) const
{
    return m_entries.size() == other.m_entries.size() &&
           std::all_of(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
               const Value* value = other.Find(entry.key);
               return value && SameValue(entry.value, *value);
           });
}

const std::string* TextIn(const CSettingsRecord::Value& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) return text;
    if (const auto* text = std::get_if<WideText>(&value)) return &text->utf8;
    const auto* atom = std::get_if<AtomValue>(&value);
    return atom ? &atom->name : nullptr;
}

bool SameValue(const CSettingsRecord::Value& a, const CSettingsRecord::Value& b)
{
    const auto* nestedA = std::get_if<CSettingsRecord::Nested>(&a);
    const auto* nestedB = std::get_if<CSettingsRecord::Nested>(&b);
    return nestedA && nestedB ? **nestedA == **nestedB : a == b;
}

namespace {

constexpr std::string_view kNumItems = "NumItems";

// The texts under "0", "1", ... up to the stored count, which is not trusted beyond the entries that exist.
std::vector<std::string> ReadItems(const CSettingsRecord& list)
{
    std::vector<std::string> items;
    const std::int32_t stored = list.Int(kNumItems, 0);
    const auto present = static_cast<std::int32_t>(list.Entries().size());
    for (std::int32_t i = 0; i < stored && i < present; ++i) items.push_back(list.AnyText(std::to_string(i)));
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
