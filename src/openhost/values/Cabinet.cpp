#include "openhost/values/Cabinet.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <utility>
#include <vector>

#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"
#include "openhost/values/CabKeys.h"
#include "openhost/values/CabStream.h"

namespace openhost {

namespace {

CSharedBlock CopyBlock(const CSharedBlock& block) { return {SharedCopy(block.View()), block.Size()}; }

void DestroyPointer(CabPointer pointer)
{
    if (!pointer.target || pointer.target.use_count() > 1) return;
    const CabPointer::Target target = *pointer.target;
    pointer.target.reset();
    if (target.destroy && target.pointer) CallPlugIn(target.destroy, target.pointer);
}

void DestroyOwnedCab(CCabinet& cab)
{
    cab.SetParent(nullptr);
    const ASCab handle = CabHandle(cab);
    try {
        cab.MakeEmpty();
    } catch (...) {
        Part<CCabinets>().handles.Take(handle);
        throw;
    }
    Part<CCabinets>().handles.Take(handle);
}

}  // namespace

ASCabValueType TypeOf(const CabValue& value)
{
    // In the order of the alternatives.
    constexpr ASCabValueType kTypes[] = {
        kASValueNull, kASValueBool,   kASValueInteger, kASValueUns,     kASValueInt64, kASValueUns64,  kASValueDouble,
        kASValueAtom, kASValueString, kASValueBinary,  kASValuePointer, kASValueText,  kASValueCabinet};
    static_assert(std::size(kTypes) == std::variant_size_v<CabValue>);
    return kTypes[value.index()];
}

CabValue CopyValue(const CabValue& value)
{
    return std::visit(Overloaded{[](const CabString& string) { return CabValue(CabString{CopyBlock(string.block)}); },
                                 [](const CabBinary& binary) { return CabValue(CabBinary{CopyBlock(binary.block)}); },
                                 [](CHostText* text) { return CabValue(&TextAt(DupText(*text))); },
                                 [](CCabinet* cab) { return CabValue(&CabAt(DupCab(*cab))); },
                                 [](const auto& plain) { return CabValue(plain); }},
                      value);
}

void DestroyValue(CabValue value)
{
    if (const auto* pointer = std::get_if<CabPointer>(&value)) {
        CabPointer last = *pointer;
        value = CabNull{};
        DestroyPointer(std::move(last));
    } else if (auto* const* text = std::get_if<CHostText*>(&value)) {
        (*text)->SetOwner(nullptr);
        DestroyText(TextHandle(**text));
    } else if (auto* const* cab = std::get_if<CCabinet*>(&value)) {
        DestroyOwnedCab(**cab);
    }
}

bool EqualValues(const CabValue& one, const CabValue& other)
{
    if (one.index() != other.index()) return false;
    return std::visit(
        Overloaded{
            [](const CabNull&) { return true; },
            [&](const CabAtom& atom) { return atom.atom == std::get<CabAtom>(other).atom; },
            [&](const CabString& string) { return string.block.View() == std::get<CabString>(other).block.View(); },
            [&](const CabBinary& binary) { return binary.block.View() == std::get<CabBinary>(other).block.View(); },
            [&](const CabPointer& pointer) {
                const auto& second = std::get<CabPointer>(other);
                return pointer.type == second.type && pointer.target->pointer == second.target->pointer;
            },
            [&](CHostText* text) { return text->Utf16() == std::get<CHostText*>(other)->Utf16(); },
            [&](CCabinet* cab) { return cab->Equals(*std::get<CCabinet*>(other)); },
            [&](const auto& plain) { return plain == std::get<std::decay_t<decltype(plain)>>(other); }},
        one);
}

namespace {

void SetOwner(const CabValue& value, const CCabinet* owner)
{
    if (auto* const* text = std::get_if<CHostText*>(&value)) (*text)->SetOwner(owner);
    if (auto* const* cab = std::get_if<CCabinet*>(&value)) (*cab)->SetParent(owner);
}

}  // namespace

CCabinet::CCabinet() : m_identity(Part<CCabinets>().nextIdentity++) {}

CCabinet::CCabinet(PackedEntries packed) : CCabinet()
{
    m_packed = std::make_unique<PackedEntries>(std::move(packed));
}

const CCabinet::Entries& CCabinet::All() const
{
    if (!m_packed) return m_entries;
    Entries made;
    UnpackEntries(*m_packed, [&](std::string_view key, CabValue value) {
        SetOwner(value, this);
        made.emplace_hint(made.end(), key, Entry{std::move(value), Part<CCabinets>().nextSerial++});
    });
    m_entries = std::move(made);
    m_packed.reset();
    return m_entries;
}

CCabinet::Place CCabinet::PlaceOf(std::string_view path) const
{
    Place place{this, path};
    for (bool last = false;;) {
        std::string_view below = place.rest;
        const std::string_view step = CutStep(below, last);
        if (last) return place;
        const auto entry = place.level->All().find(step);
        if (entry == place.level->All().end()) return place;
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
    const auto entry = place.level->All().find(place.rest);  // a rest of several steps is no key of any level
    return entry == place.level->All().end() ? nullptr : &entry->second.value;
}

std::size_t CCabinet::Depth() const
{
    std::size_t depth = 1;
    for (const CCabinet* above = m_parent; above; above = above->m_parent) ++depth;
    return depth;
}

std::size_t CCabinet::Height() const
{
    if (m_packed) return m_packed->height;
    std::size_t below = 0;
    for (const auto& entry : All())
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
        const auto inTheWay = place.level->All().find(CutStep(rest, last));
        const bool free =
            inTheWay == place.level->All().end() || std::holds_alternative<CabNull>(inTheWay->second.value);
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
    const auto entry = All().find(step);
    if (entry == All().end()) {
        All().emplace(step, Entry{std::move(value), Part<CCabinets>().nextSerial++});
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
    const auto behindNumbers = All().lower_bound(std::string_view());
    std::string key = behindNumbers == All().begin() ? "1" : NextNumberKey(std::prev(behindNumbers)->first);
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
    const CabValue* const there = Find(key);
    const auto* const old = there ? std::get_if<CabPointer>(there) : nullptr;
    // The same pointer put again is one more reference, not a second owner.
    const bool same = old && old->target->pointer == pointer && old->target->destroy == destroy;
    CabPointer value{std::move(typeName),
                     same ? old->target : std::make_shared<CabPointer::Target>(CabPointer::Target{pointer, destroy})};
    Put(key, std::move(value));
}

std::optional<CabValue> CCabinet::DetachHere(std::string_view step)
{
    const auto entry = All().find(step);
    if (entry == All().end()) return std::nullopt;
    CabValue value = std::move(entry->second.value);
    All().erase(entry);
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
    m_packed.reset();
    std::exception_ptr raised;
    while (!All().empty()) {
        const std::string key = All().begin()->first;
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
    if (source.m_packed && All().empty() && Depth() + source.m_packed->height <= kMaxCabDepth + 1) {
        m_packed = std::make_unique<PackedEntries>(*source.m_packed);
        return;
    }
    std::vector<std::pair<std::string, CabValue>> copies;  // made first: one cab may be inside the other
    for (const auto& entry : source.All()) copies.emplace_back(entry.first, CopyValue(entry.second.value));
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
    return std::equal(All().begin(), All().end(), other.All().begin(), other.All().end(),
                      [](const auto& one, const auto& second) {
                          return one.first == second.first && EqualValues(one.second.value, second.second.value);
                      });
}

}  // namespace openhost
