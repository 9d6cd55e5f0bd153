#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/// Text that is stored wide. Held as UTF-8.
struct WideText {
    std::string utf8;
    bool operator==(const WideText&) const = default;
};

/// A name of the host.
struct AtomValue {
    std::string name;
    bool operator==(const AtomValue&) const = default;
};

/// Raw bytes.
struct BinaryValue {
    std::string bytes;
    bool operator==(const BinaryValue&) const = default;
};

/// The value of a key that is there and holds nothing.
struct NullValue {
    bool operator==(const NullValue&) const = default;
};

/// The one tree of typed values: settings, and the parameters of the steps of a sequence.
///
/// Names in the order in which they were first put, records among the values.
/// A value type: copies are deep. Keys are short ASCII texts, each at most once.
class CSettingsRecord {
public:
    /// A nested record; never null.
    using Nested = std::shared_ptr<const CSettingsRecord>;
    using Value =
        std::variant<NullValue, bool, std::int32_t, double, std::string, WideText, AtomValue, BinaryValue, Nested>;
    struct Entry {
        std::string key;
        Value value;
    };

    CSettingsRecord() = default;
    CSettingsRecord(const CSettingsRecord& other) : m_entries(other.m_entries) { Index(); }
    CSettingsRecord(CSettingsRecord&&) noexcept = default;
    CSettingsRecord& operator=(CSettingsRecord other) noexcept;
    ~CSettingsRecord() = default;

    bool Known(std::string_view key) const { return Find(key) != nullptr; }
    /// Borrowed until the next change; null when the key is absent.
    const Value* Find(std::string_view key) const;
    const std::vector<Entry>& Entries() const { return m_entries; }
    bool Empty() const { return m_entries.empty(); }

    // Readers answer the default when the key is absent or holds another type.
    bool Bool(std::string_view key, bool fallback) const;
    std::int32_t Int(std::string_view key, std::int32_t fallback) const;
    double Double(std::string_view key, double fallback) const;
    std::string String(std::string_view key, std::string_view fallback = {}) const;
    std::string Wide(std::string_view key, std::string_view fallbackUtf8 = {}) const;
    /// Of a text, narrow or wide, or an atom's name.
    std::string AnyText(std::string_view key) const;
    std::string Binary(std::string_view key) const;
    /// Borrowed until the next change; null when there is no record under the key.
    const CSettingsRecord* Record(std::string_view key) const;

    // Writers replace what the key held, keeping its place.
    void PutValue(std::string_view key, Value value);
    void PutBool(std::string_view key, bool value) { PutValue(key, value); }
    void PutInt(std::string_view key, std::int32_t value) { PutValue(key, value); }
    void PutDouble(std::string_view key, double value) { PutValue(key, value); }
    void PutString(std::string_view key, std::string_view value) { PutValue(key, std::string(value)); }
    void PutWide(std::string_view key, std::string_view utf8) { PutValue(key, WideText{std::string(utf8)}); }
    void PutAtom(std::string_view key, std::string_view name) { PutValue(key, AtomValue{std::string(name)}); }
    void PutBinary(std::string_view key, std::string_view bytes) { PutValue(key, BinaryValue{std::string(bytes)}); }
    void PutNull(std::string_view key) { PutValue(key, NullValue{}); }
    void PutRecord(std::string_view key, CSettingsRecord record);
    /// Nothing happens when the key is absent.
    void Erase(std::string_view key);

    /// Same keys, types and values; the order does not count.
    bool operator==(const CSettingsRecord& other) const;

private:
    using Places = std::map<std::string, std::size_t, std::less<>>;

    std::size_t PlaceOf(std::string_view key) const;  // the number of entries when it is not there
    void Index();

    std::vector<Entry> m_entries;
    std::unique_ptr<Places> m_places;  // of each key in m_entries; none as long as there are few
};

/// The text of a value that is a narrow or a wide text or an atom, borrowed; null for another one.
[[nodiscard]] const std::string* TextIn(const CSettingsRecord::Value& value);

/// Same type and value; records are compared as a whole.
[[nodiscard]] bool SameValue(const CSettingsRecord::Value& a, const CSettingsRecord::Value& b);

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
