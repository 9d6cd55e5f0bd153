#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Expected.h"
#include "common/SettingsRecord.h"
#include "hostapi/HostTypes.h"

// Names as the host's atoms.

inline constexpr ASAtom kNullAtom = 0xFFFF;

/// The atom of a text; the same text always gives the same atom.
[[nodiscard]] ASAtom Atom(const std::string& text);

/// The text of an atom; empty for the null atom and for one that was never made.
[[nodiscard]] std::string AtomText(ASAtom atom);

// The host's key/value collections.
//
// Keys are ASCII; "a:b" walks through nested cabs. Strings are bytes in the narrow code page; texts are Unicode
// inside the host and narrow here. All functions may throw CHostException.

class CCab;

/// Reads a borrowed cab; valid as long as its owner. A null view behaves as an empty cab.
class CCabView {
public:
    CCabView() = default;
    explicit CCabView(ASCab cab) : m_cab(cab) {}

    explicit operator bool() const { return m_cab != nullptr; }
    ASConstCab Get() const { return m_cab; }

    /// The getters answer the fallback, or nothing, when the key is absent or holds another type; Double also takes
    /// an integer. Text and StringOrText answer narrow text.
    [[nodiscard]] bool Bool(const char* key, bool fallback) const;
    [[nodiscard]] int Int(const char* key, int fallback) const;
    [[nodiscard]] double Double(const char* key, double fallback) const;
    [[nodiscard]] std::optional<ASAtom> Atom(const char* key) const;
    [[nodiscard]] std::optional<std::string> String(const char* key) const;
    [[nodiscard]] std::optional<std::string> Text(const char* key) const;
    [[nodiscard]] std::optional<std::string> TextUtf8(const char* key) const;
    [[nodiscard]] std::optional<std::string> StringOrText(const char* key) const;
    [[nodiscard]] std::optional<std::string> Binary(const char* key) const;
    [[nodiscard]] CCabView Cab(const char* key) const;  // a null view when absent

    [[nodiscard]] bool Known(const char* key) const;           // true for null values too
    [[nodiscard]] ASCabValueType Type(const char* key) const;  // kASValueUnknown when absent
    [[nodiscard]] int Size() const;                            // of the top level
    [[nodiscard]] std::vector<std::string> Keys() const;       // digits first by number, then by bytes
    [[nodiscard]] CCab Copy() const;                           // a new cab with copies of everything

protected:
    ASCab m_cab = nullptr;
};

/// Writes a borrowed cab, which must not be null. Every put replaces what the key held and makes the cabs missing on
/// the way.
class CCabEditor : public CCabView {
public:
    explicit CCabEditor(ASCab cab) : CCabView(cab) {}

    ASCab Get() const { return m_cab; }

    void PutBool(const char* key, bool value);
    void PutInt(const char* key, int value);
    void PutDouble(const char* key, double value);
    void PutAtom(const char* key, ASAtom value);
    void PutString(const char* key, const std::string& value);  // ends at the first zero byte
    void PutText(const char* key, const std::string& narrow);   // stored as Unicode
    void PutTextUtf8(const char* key, const std::string& utf8);
    void PutBinary(const char* key, const std::string& bytes);
    void PutNull(const char* key);               // the key stays, with a null value
    void PutCab(const char* key, CCab&& value);  // hands the cab over
    void PutPointer(const char* key, const char* typeName, void* pointer);

    void Remove(const char* key);
    void MakeEmpty();
    void CopyFrom(CCabView source);  // equal keys are overwritten, others stay

    /// The nested cab for writing; a null editor when absent.
    [[nodiscard]] CCabEditor EditCab(const char* key) const;
};

/// Owns one cab, or nothing (after a move or Release).
class CCab : public CCabEditor {
public:
    CCab();  // a new, empty cab
    explicit CCab(ASCab adopted) noexcept : CCabEditor(adopted) {}
    CCab(CCab&& other) noexcept : CCabEditor(other.Release()) {}
    CCab& operator=(CCab&& other) noexcept
    {
        std::swap(m_cab, other.m_cab);
        return *this;
    }
    ~CCab();

    CCabView View() const { return CCabView(m_cab); }
    CCabEditor Edit() { return CCabEditor(m_cab); }
    ASCab Release() noexcept { return std::exchange(m_cab, nullptr); }  // the caller destroys from here on
};

/// The key of an entry of a list: its index in decimal digits.
[[nodiscard]] inline std::string CabKey(int index) { return std::to_string(index); }

// Cabs in files, in the host's own form.

/// Reads the cab that a file holds. The sentence says what went wrong: the file cannot be opened, the content is no
/// cab of this host, or the host's own error. Nothing stays open. Does not throw CHostException.
[[nodiscard]] Expected<CCab> ReadCabFile(const std::string& path);

/// Writes a cab to a file, which is made or replaced; a failure may leave an incomplete file. Does not throw
/// CHostException.
[[nodiscard]] bool WriteCabFile(const std::string& path, CCabView cab);

// Cabs of the host and our own settings records, turned into each other.

/// Copies every entry in the order of the cab. Left out: typed pointers,
/// which would mean nothing later, and unsigned and 64-bit numbers, which the plug-in has no use for.
[[nodiscard]] CSettingsRecord RecordFromCab(CCabView cab);

/// Copies every entry. Strings stay strings and wide texts become texts of the host; keys go over as they stand, so
/// one that holds ":" makes nested cabs. What a host refuses is told with the key of the value.
[[nodiscard]] CCab CabFromRecord(const CSettingsRecord& record);

/// One value; nothing for what RecordFromCab leaves out.
[[nodiscard]] std::optional<CSettingsRecord::Value> ValueFromCab(CCabView cab, const char* key);
