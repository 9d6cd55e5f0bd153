#include "common/SettingsRecord.h"

#include <algorithm>

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

bool SameValue(const CSettingsRecord::Value& a, const CSettingsRecord::Value& b)
{
    const auto* nestedA = std::get_if<CSettingsRecord::Nested>(&a);
    const auto* nestedB = std::get_if<CSettingsRecord::Nested>(&b);
    return nestedA && nestedB ? **nestedA == **nestedB : a == b;
}

}  // namespace

const CSettingsRecord::Value* CSettingsRecord::Find(std::string_view key) const
{
    const auto found = m_places.find(key);
    return found == m_places.end() ? nullptr : &m_entries[found->second].value;
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
    if (const auto* text = Get<std::string>(*this, key)) return *text;
    if (const auto* text = Get<WideText>(*this, key)) return text->utf8;
    const auto* atom = Get<AtomValue>(*this, key);
    return atom ? atom->name : std::string();
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
    const auto found = m_places.find(key);
    if (found != m_places.end()) {
        m_entries[found->second].value = std::move(value);
        return;
    }
    m_places.emplace(key, m_entries.size());
    m_entries.push_back({std::string(key), std::move(value)});
}

void CSettingsRecord::PutRecord(std::string_view key, CSettingsRecord record)
{
    PutValue(key, std::make_shared<const CSettingsRecord>(std::move(record)));
}

void CSettingsRecord::Erase(std::string_view key)
{
    const auto found = m_places.find(key);
    if (found == m_places.end()) return;
    const std::size_t place = found->second;
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(place));
    m_places.erase(found);
    for (auto& [name, index] : m_places) {
        if (index > place) --index;
    }
}

bool CSettingsRecord::operator==(const CSettingsRecord& other) const
{
    return m_entries.size() == other.m_entries.size() &&
           std::all_of(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
               const Value* value = other.Find(entry.key);
               return value && SameValue(entry.value, *value);
           });
}
