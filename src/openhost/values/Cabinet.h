#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "hostapi/HostRecords.h"
#include "openhost/core/Handles.h"
#include "openhost/core/Memory.h"
#include "openhost/values/Text.h"

namespace openhost {

/// A visitor made of one function for each alternative.
template <class... F>
struct Overloaded : F... {
    using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;

class CCabinet;
class CHostText;

/// One block of shared memory with its owner; freed with the host's free.
class CSharedBlock {
public:
    CSharedBlock() = default;
    CSharedBlock(void* adopted, std::size_t size) : m_bytes(adopted), m_size(size) {}
    char* Bytes() const { return static_cast<char*>(m_bytes.get()); }
    std::size_t Size() const { return m_size; }
    std::string_view View() const { return {Bytes(), m_size}; }
    char* Release() { return static_cast<char*>(m_bytes.release()); }

private:
    struct Free {
        void operator()(void* block) const { FreeShared(block); }
    };
    std::unique_ptr<void, Free> m_bytes;
    std::size_t m_size = 0;
};

struct CabNull {};
struct CabAtom {
    ASAtom atom;
};
/// A C string; its size leaves out the zero at its end.
struct CabString {
    CSharedBlock block;
};
struct CabBinary {
    CSharedBlock block;
};
/// A pointer with the name of its type. All copies share one target; `destroy` runs on it with the last of them.
struct CabPointer {
    struct Target {
        void* pointer;
        ASCabPointerDestroyProc destroy;
    };
    std::string type;
    std::shared_ptr<Target> target;
};

/// What an entry of a cab holds. Texts and nested cabs are living host objects that the entry owns.
using CabValue = std::variant<CabNull, bool, std::int32_t, std::uint32_t, std::int64_t, std::uint64_t, double,
                              CabAtom, CabString, CabBinary, CabPointer, CHostText*, CCabinet*>;

ASCabValueType TypeOf(const CabValue& value);

/// Copies texts, bytes and nested cabs; of a pointer the reference. The copy is not yet inside any cab.
CabValue CopyValue(const CabValue& value);

/// Frees what the value owns. Runs the destroy procedure of a pointer whose last reference this was; it may raise.
void DestroyValue(CabValue value);

bool EqualValues(const CabValue& one, const CabValue& other);

/// Keys made of digits come first, in the order of their numbers; the others follow in the order of their bytes.
struct CabKeyOrder {
    using is_transparent = void;
    bool operator()(std::string_view one, std::string_view other) const;
};

inline constexpr std::size_t kMaxCabDepth = 128;

/// The entries of a cab as they stand in a stream that has been checked; they become values when somebody asks for
/// one. A long sequence is read step by step, and only its bytes are in memory for the steps that nobody looks at.
struct PackedEntries {
    std::shared_ptr<const std::string> stream;
    std::string_view entries;  // from their count on
    std::size_t height = 1;    // 1 when no cab is inside
};

/// A tree of named values, held by plug-ins as ASCab.
///
/// Every key may be a path "a:b:c" that walks through nested cabs. A read answers its default when a step is missing;
/// a put makes the cabs that are missing on the way. Keys are printable ASCII, at most 1024 characters for each step,
/// none empty; a put with another key raises genErrBadParm, and so does one that walks through a value that is no cab
/// or nests deeper than kMaxCabDepth.
/// Ownership: a cab owns its values. What a read returns belongs to the cab until that entry changes. A cab is inside
/// at most one other.
class CCabinet {
public:
    CCabinet();
    explicit CCabinet(PackedEntries packed);
    CCabinet(const CCabinet&) = delete;
    CCabinet& operator=(const CCabinet&) = delete;

    std::size_t NumEntries() const { return All().size(); }
    bool Known(std::string_view key) const { return Find(key) != nullptr; }
    ASCabValueType Type(std::string_view key) const;  // kASValueUnknown for a missing key
    /// The value, or null. The general form of all reads below.
    const CabValue* Find(std::string_view key) const;

    bool GetBool(std::string_view key, bool fallback = false) const;
    std::int32_t GetInt(std::string_view key, std::int32_t fallback = 0) const;
    std::uint32_t GetUns(std::string_view key, std::uint32_t fallback = 0) const;
    std::int64_t GetInt64(std::string_view key, std::int64_t fallback = 0) const;
    std::uint64_t GetUns64(std::string_view key, std::uint64_t fallback = 0) const;
    double GetDouble(std::string_view key, double fallback = 0) const;  // takes integers too
    ASAtom GetAtom(std::string_view key, ASAtom fallback = 0xFFFF) const;
    const char* GetString(std::string_view key) const;  // null when there is none
    std::optional<std::string_view> GetBinary(std::string_view key) const;
    CHostText* GetText(std::string_view key) const;                           // null when there is none
    CCabinet* GetCab(std::string_view key) const;                             // null when there is none
    void* GetPointer(std::string_view key, std::string_view typeName) const;  // null unless the type is the same

    /// Puts any value; texts and cabs must not be inside a cab yet (raises genErrBadParm, and nothing has changed).
    /// PutUnderFreeNumber invents a key behind all numbers in use, from "1", and answers it.
    void Put(std::string_view key, CabValue value);
    std::string PutUnderFreeNumber(CabValue value);

    void PutBool(std::string_view key, bool value) { Put(key, value); }
    void PutInt(std::string_view key, std::int32_t value) { Put(key, value); }
    void PutDouble(std::string_view key, double value) { Put(key, value); }
    void PutAtom(std::string_view key, ASAtom value) { Put(key, CabAtom{value}); }
    void PutString(std::string_view key, std::string_view value);  // copied
    void PutBinary(std::string_view key, std::string_view bytes);  // copied
    void PutText(std::string_view key, std::string_view utf8);     // as a new text
    void PutNull(std::string_view key) { Put(key, CabNull{}); }
    /// The cab under the key, made when there is none (another value is replaced).
    CCabinet& PutNewCab(std::string_view key);
    void PutPointer(std::string_view key,  // a null pointer removes the key
                    std::string typeName, void* pointer, ASCabPointerDestroyProc destroy = nullptr);

    /// Removes and frees; a missing key is ignored.
    void Remove(std::string_view key);
    /// Takes the value out; it is inside no cab from here on. Nothing when the key is missing.
    std::optional<CabValue> Detach(std::string_view key);
    /// Gives the entry another key on the same level. Ignored when there is no such entry; an entry that has the new
    /// key is replaced.
    void Rename(std::string_view oldKey, std::string_view newKey);
    void MakeEmpty();
    void DestroyEmpties(bool recurse);

    /// Copies all entries of `source` here: equal keys are overwritten, others stay.
    void CopyFrom(const CCabinet& source);
    bool Equals(const CCabinet& other) const;

    /// Visits the entries of this level in the order of keys until `visit` answers false. Changes during the walk are
    /// safe: entries that were added or removed since its start are not visited. The walk ends when the cab is gone.
    using Visit = std::function<bool(const std::string& key, const CabValue& value)>;
    void Walk(const Visit& visit);
    /// As Walk, with changes of this level forbidden (they raise genErrBadParm).
    void WalkConst(const Visit& visit) const;

    const CCabinet* Parent() const { return m_parent; }
    void SetParent(const CCabinet* parent) { m_parent = parent; }
    bool IsInside(const CCabinet& other) const;  // at any depth, or the same
    void RequireChangeable() const;              // raises genErrBadParm inside a walk that forbids changes
    /// Raises what Put would raise for this key, so that callers can check before they give a value away.
    void RequirePuttable(std::string_view key) const;
    unsigned long long Identity() const { return m_identity; }

private:
    struct Entry {
        CabValue value;
        unsigned long long serial;
    };
    using Entries = std::map<std::string, Entry, CabKeyOrder>;

    /// The level on which the last step of a path stands, as far as it exists.
    struct Place {
        const CCabinet* level;  // the deepest that is there
        std::string_view rest;  // the steps below it; one step when the whole way is there
    };
    Place PlaceOf(std::string_view path) const;
    static CCabinet* Changeable(const Place& place);  // null when the way is not there
    CCabinet& LevelMade(Place& place);
    void RequirePuttable(const Place& place, const CabValue& value) const;
    std::size_t Depth() const;   // 1 when it is inside no other
    std::size_t Height() const;  // 1 when no cab is inside
    void PutHere(std::string_view step, CabValue value);
    std::optional<CabValue> DetachHere(std::string_view step);
    template <class Scalar>
    Scalar GetScalar(std::string_view key, Scalar fallback) const;
    void WalkKeys(const Visit& visit) const;

    const Entries& All() const;  // unpacks them first
    Entries& All() { return const_cast<Entries&>(std::as_const(*this).All()); }

    mutable std::unique_ptr<PackedEntries> m_packed;
    mutable Entries m_entries;  // empty while they are packed; reached through All() only
    const CCabinet* m_parent = nullptr;
    unsigned long long m_identity;  // never used twice
    mutable int m_constWalks = 0;
};

/// All living cabs, nested ones included.
class CCabinets {
public:
    CHandles<CCabinet, ASCab> handles{"cab"};
    unsigned long long nextIdentity = 1;
    unsigned long long nextSerial = 1;
};

/// Raises genErrBadParm unless `cab` is a living cab.
CCabinet& CabAt(ASConstCab cab);
/// A new cab that the caller destroys, or puts into another one.
ASCab NewCab();
ASCab NewPackedCab(PackedEntries packed);
inline ASCab CabHandle(const CCabinet& cab) { return CHandles<CCabinet, ASCab>::HandleOf(cab); }
/// A copy in a new cab that the caller destroys.
ASCab DupCab(const CCabinet& source);
/// Raises genErrBadParm for an unknown cab or one inside another.
void DestroyCab(ASCab handle);
std::size_t LiveCabs();

/// Owns one cab for host code; Release() hands it over.
class COwnedCab {
public:
    explicit COwnedCab(ASCab adopted = nullptr) : m_cab(adopted) {}
    static COwnedCab New() { return COwnedCab(NewCab()); }
    COwnedCab(COwnedCab&& other) noexcept : m_cab(other.Release()) {}
    COwnedCab& operator=(COwnedCab&& other) noexcept;
    ~COwnedCab();
    ASCab Get() const { return m_cab; }
    explicit operator bool() const { return m_cab != nullptr; }
    CCabinet& operator*() const { return CabAt(m_cab); }
    CCabinet* operator->() const { return &CabAt(m_cab); }
    ASCab Release() noexcept;

private:
    ASCab m_cab;
};

}  // namespace openhost
