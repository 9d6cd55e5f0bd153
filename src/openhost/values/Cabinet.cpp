#include "openhost/values/Cabinet.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

#include "openhost/core/Host.h"
#include "openhost/values/CabKeys.h"

namespace openhost {

namespace {

template <class T>
const T* Holds(const CabValue* value)
{
    return value ? std::get_if<T>(value) : nullptr;
}

void SetOwner(const CabValue& value, const CCabinet* owner)
{
    if (auto* const* text = std::get_if<CHostText*>(&value)) (*text)->SetOwner(owner);
    if (auto* const* cab = std::get_if<CCabinet*>(&value)) (*cab)->SetParent(owner);
}

}  // namespace

CCabinet::CCabinet() : m_identity(Part<CCabinets>().nextIdentity++) {}

CCabinet::Place CCabinet::PlaceOf(std::string_view path) const
{
    Place place{this, path};
    for (bool last = false;;) {
        std::string_view below = place.rest;
        const std::string_view step = CutStep(below, last);
        if (last) return place;
        const auto entry = place.level->m_entries.find(step);
        if (entry == place.level->m_entries.end()) return place;
        auto* const* nested = std::get_if<CCabinet*>(&entry->second.value);
        if (!nested) return place;
        place = {*nested, below};
    }
}

CCabinet* CCabinet::Changeable(const Place& place)
{
    if (place.rest.find(':') != std::string_view::npos) return nullptr;
    place.level->RequireChangeable();
    return const_cast<CCabinet*>(place.level);
}

const CabValue* CCabinet::Find(std::string_view key) const
{
    const Place place = PlaceOf(key);
    const auto entry = place.level->m_entries.find(place.rest);  // a rest of several steps is no key of any level
    return entry == place.level->m_entries.end() ? nullptr : &entry->second.value;
}

ASCabValueType CCabinet::Type(std::string_view key) const
{
    const CabValue* const value = Find(key);
    return value ? TypeOf(*value) : static_cast<ASCabValueType>(kASValueUnknown);
}

template <class Scalar>
Scalar CCabinet::GetScalar(std::string_view key, Scalar fallback) const
{
    const auto* const value = Holds<Scalar>(Find(key));
    return value ? *value : fallback;
}

bool CCabinet::GetBool(std::string_view key, bool fallback) const { return GetScalar(key, fallback); }
std::int32_t CCabinet::GetInt(std::string_view key, std::int32_t fallback) const { return GetScalar(key, fallback); }
std::uint32_t CCabinet::GetUns(std::string_view key, std::uint32_t fallback) const
{
    return GetScalar(key, fallback);
}
std::int64_t CCabinet::GetInt64(std::string_view key, std::int64_t fallback) const
{
    return GetScalar(key, fallback);
}
std::uint64_t CCabinet::GetUns64(std::string_view key, std::uint64_t fallback) const
{
    return GetScalar(key, fallback);
}

double CCabinet::GetDouble(std::string_view key, double fallback) const
{
    const CabValue* const value = Find(key);
    if (const auto* number = Holds<std::int32_t>(value)) return *number;
    if (const auto* number = Holds<std::uint32_t>(value)) return *number;
    if (const auto* number = Holds<std::int64_t>(value)) return static_cast<double>(*number);
    if (const auto* number = Holds<std::uint64_t>(value)) return static_cast<double>(*number);
    return GetScalar(key, fallback);
}

ASAtom CCabinet::GetAtom(std::string_view key, ASAtom fallback) const
{
    const auto* const value = Holds<CabAtom>(Find(key));
    return value ? value->atom : fallback;
}

const char* CCabinet::GetString(std::string_view key) const
{
    const auto* const value = Holds<CabString>(Find(key));
    return value ? value->block.Bytes() : nullptr;
}

std::optional<std::string_view> CCabinet::GetBinary(std::string_view key) const
{
    const auto* const value = Holds<CabBinary>(Find(key));
    return value ? std::optional(value->block.View()) : std::nullopt;
}

CHostText* CCabinet::GetText(std::string_view key) const
{
    auto* const* const value = Holds<CHostText*>(Find(key));
    return value ? *value : nullptr;
}

CCabinet* CCabinet::GetCab(std::string_view key) const
{
    auto* const* const value = Holds<CCabinet*>(Find(key));
    return value ? *value : nullptr;
}

void* CCabinet::GetPointer(std::string_view key, std::string_view typeName) const
{
    const auto* const value = Holds<CabPointer>(Find(key));
    return value && value->type == typeName ? value->target->pointer : nullptr;
}

std::size_t CCabinet::Depth() const
{
    std::size_t depth = 1;
    for (const CCabinet* above = m_parent; above; above = above->m_parent) ++depth;
    return depth;
}

std::size_t CCabinet::Height() const
{
    std::size_t below = 0;
    for (const auto& entry : m_entries)
        if (auto* const* cab = std::get_if<CCabinet*>(&entry.second.value)) below = std::max(below, (*cab)->Height());
    return below + 1;
}

bool CCabinet::IsInside(const CCabinet& other) const
{
    for (const CCabinet* cab = this; cab; cab = cab->m_parent)
        if (cab == &other) return true;
    return false;
}

void CCabinet::RequireChangeable() const
{
    Require(m_constWalks == 0, "a cab must not change while it is walked through read-only");
}

void CCabinet::RequirePuttable(std::string_view key) const { RequirePuttable(PlaceOf(key), CabNull{}); }

void CCabinet::RequirePuttable(const Place& place, const CabValue& value) const
{
    std::size_t steps = 0;
    std::string_view rest = place.rest;
    for (bool last = false; !last; ++steps)
        Require(IsKeyStep(CutStep(rest, last)), "a cab's key must be printable ASCII, with no empty step");
    if (steps > 1) {
        bool last = false;
        rest = place.rest;
        const auto inTheWay = place.level->m_entries.find(CutStep(rest, last));
        const bool free =
            inTheWay == place.level->m_entries.end() || std::holds_alternative<CabNull>(inTheWay->second.value);
        Require(free, "the way of the key leads through a value that is no cab");
    }
    place.level->RequireChangeable();
    std::size_t depth = place.level->Depth() + steps - 1;
    if (auto* const* text = std::get_if<CHostText*>(&value))
        Require((*text)->Owner() == nullptr, "the text is inside a cab already");
    if (auto* const* cab = std::get_if<CCabinet*>(&value)) {
        Require((*cab)->Parent() == nullptr, "the cab is inside a cab already");
        Require(!place.level->IsInside(**cab), "a cab cannot be put into itself");
        depth += (*cab)->Height();
    }
    Require(depth <= kMaxCabDepth, "cabs are nested too deeply");
}

CCabinet& CCabinet::LevelMade(Place& place)
{
    auto* level = const_cast<CCabinet*>(place.level);
    for (bool last = false;;) {
        std::string_view below = place.rest;
        const std::string_view step = CutStep(below, last);
        if (last) return *level;
        CCabinet& made = CabAt(NewCab());
        level->PutHere(step, &made);
        level = &made;
        place = {level, below};
    }
}

void CCabinet::PutHere(std::string_view step, CabValue value)
{
    SetOwner(value, this);
    const auto entry = m_entries.find(step);
    if (entry == m_entries.end()) {
        m_entries.emplace(step, Entry{std::move(value), Part<CCabinets>().nextSerial++});
        return;
    }
    CabValue old = std::exchange(entry->second.value, std::move(value));
    SetOwner(old, nullptr);
    DestroyValue(std::move(old));
}

void CCabinet::Put(std::string_view key, CabValue value)
{
    Place place = PlaceOf(key);
    RequirePuttable(place, value);
    CCabinet& level = LevelMade(place);
    level.PutHere(place.rest, std::move(value));
}

std::string CCabinet::PutUnderFreeNumber(CabValue value)
{
    const auto behindNumbers = m_entries.lower_bound(std::string_view());
    std::string key = behindNumbers == m_entries.begin() ? "1" : NextNumberKey(std::prev(behindNumbers)->first);
    Put(key, std::move(value));
    return key;
}

void CCabinet::PutString(std::string_view key, std::string_view value)
{
    Put(key, CabString{CSharedBlock(SharedCopy(value), value.size())});
}

void CCabinet::PutBinary(std::string_view key, std::string_view bytes)
{
    Put(key, CabBinary{CSharedBlock(SharedCopy(bytes), bytes.size())});
}

void CCabinet::PutText(std::string_view key, std::string_view utf8)
{
    RequirePuttable(key);
    Put(key, &TextAt(NewText(utf8)));
}

CCabinet& CCabinet::PutNewCab(std::string_view key)
{
    if (CCabinet* const there = GetCab(key)) return *there;
    COwnedCab made = COwnedCab::New();
    Put(key, &*made);
    return CabAt(made.Release());
}

void CCabinet::PutPointer(std::string_view key, std::string typeName, void* pointer, ASCabPointerDestroyProc destroy)
{
    if (!pointer) return Remove(key);
    const auto* const old = Holds<CabPointer>(Find(key));
    // The same pointer put again is one more reference, not a second owner.
    const bool same = old && old->target->pointer == pointer && old->target->destroy == destroy;
    CabPointer value{std::move(typeName),
                     same ? old->target : std::make_shared<CabPointer::Target>(CabPointer::Target{pointer, destroy})};
    Put(key, std::move(value));
}

std::optional<CabValue> CCabinet::DetachHere(std::string_view step)
{
    const auto entry = m_entries.find(step);
    if (entry == m_entries.end()) return std::nullopt;
    CabValue value = std::move(entry->second.value);
    m_entries.erase(entry);
    SetOwner(value, nullptr);
    return value;
}

std::optional<CabValue> CCabinet::Detach(std::string_view key)
{
    const Place place = PlaceOf(key);
    CCabinet* const level = Changeable(place);
    return level ? level->DetachHere(place.rest) : std::nullopt;
}

void CCabinet::Remove(std::string_view key)
{
    if (auto value = Detach(key)) DestroyValue(std::move(*value));
}

void CCabinet::Rename(std::string_view oldKey, std::string_view newKey)
{
    const Place place = PlaceOf(oldKey);
    const std::string_view way = oldKey.substr(0, oldKey.size() - place.rest.size());
    if (newKey.find(':') != std::string_view::npos) {
        Require(newKey.starts_with(way), "a rename stays on one level of a cab");
        newKey.remove_prefix(way.size());
    }
    Require(IsKeyStep(newKey), "a cab's key must be printable ASCII, with no empty step");
    CCabinet* const level = Changeable(place);
    if (!level || place.rest == newKey) return;
    if (auto value = level->DetachHere(place.rest)) level->PutHere(newKey, std::move(*value));
}

void CCabinet::MakeEmpty()
{
    RequireChangeable();
    std::exception_ptr raised;
    while (!m_entries.empty()) {
        const std::string key = m_entries.begin()->first;
        try {
            Remove(key);
        } catch (...) {
            raised = std::current_exception();  // the rest is freed all the same
        }
    }
    if (raised) std::rethrow_exception(raised);
}

void CCabinet::DestroyEmpties(bool recurse)
{
    Walk([&](const std::string& key, const CabValue& value) {
        auto* const* const cab = std::get_if<CCabinet*>(&value);
        if (!cab) return true;
        if (recurse) (*cab)->DestroyEmpties(true);
        if ((*cab)->NumEntries() == 0) Remove(key);
        return true;
    });
}

void CCabinet::CopyFrom(const CCabinet& source)
{
    if (&source == this) return;
    RequireChangeable();
    std::vector<std::pair<std::string, CabValue>> copies;  // made first: one cab may be inside the other
    for (const auto& entry : source.m_entries) copies.emplace_back(entry.first, CopyValue(entry.second.value));
    for (std::size_t index = 0; index < copies.size(); ++index) {
        try {
            Put(copies[index].first, std::move(copies[index].second));
        } catch (...) {
            while (index < copies.size()) DestroyValue(std::move(copies[index++].second));
            throw;
        }
    }
}

bool CCabinet::Equals(const CCabinet& other) const
{
    return std::equal(m_entries.begin(), m_entries.end(), other.m_entries.begin(), other.m_entries.end(),
                      [](const auto& one, const auto& second) {
                          return one.first == second.first && EqualValues(one.second.value, second.second.value);
                      });
}

void CCabinet::WalkKeys(const Visit& visit) const
{
    std::vector<std::pair<std::string, unsigned long long>> keys;
    for (const auto& entry : m_entries) keys.emplace_back(entry.first, entry.second.serial);
    const ASCab handle = CabHandle(*this);
    const auto identity = m_identity;
    for (const auto& [key, serial] : keys) {
        const CCabinet* const alive = Part<CCabinets>().handles.Find(handle);
        if (!alive || alive->m_identity != identity) return;
        const auto entry = m_entries.find(key);
        if (entry == m_entries.end() || entry->second.serial != serial) continue;
        if (!visit(key, entry->second.value)) return;
    }
}

void CCabinet::Walk(const Visit& visit) { WalkKeys(visit); }

void CCabinet::WalkConst(const Visit& visit) const
{
    /// The cab may die in the walk: through its outer cab, or with the host's call for it.
    struct Guard {
        ASCab cab;
        unsigned long long identity;
        ~Guard()
        {
            const CCabinet* const alive = Part<CCabinets>().handles.Find(cab);
            if (alive && alive->m_identity == identity) --alive->m_constWalks;
        }
    };
    ++m_constWalks;
    const Guard guard{CabHandle(*this), m_identity};
    WalkKeys(visit);
}

CCabinet& CabAt(ASConstCab cab) { return Part<CCabinets>().handles.At(cab); }

ASCab NewCab() { return Part<CCabinets>().handles.Add(std::make_unique<CCabinet>()); }

ASCab DupCab(const CCabinet& source)
{
    COwnedCab copy = COwnedCab::New();
    copy->CopyFrom(source);
    return copy.Release();
}

void DestroyCab(ASCab handle)
{
    CCabinet& cab = CabAt(handle);
    Require(cab.Parent() == nullptr, "a cab inside another cannot be destroyed");
    cab.RequireChangeable();
    DestroyValue(&cab);
}

std::size_t LiveCabs() { return Part<CCabinets>().handles.Live(); }

COwnedCab& COwnedCab::operator=(COwnedCab&& other) noexcept
{
    std::swap(m_cab, other.m_cab);
    return *this;
}

COwnedCab::~COwnedCab()
{
    if (!m_cab || !Part<CCabinets>().handles.Find(m_cab)) return;
    try {
        DestroyValue(&CabAt(m_cab));
    } catch (...) {  // a destroy procedure raised; all has been freed
    }
}

ASCab COwnedCab::Release() noexcept { return std::exchange(m_cab, nullptr); }

}  // namespace openhost
