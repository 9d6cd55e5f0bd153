#include <utility>

#include "openhost/core/Host.h"
#include "openhost/values/Cabinet.h"

namespace openhost {

namespace {

template <class T>
const T* Holds(const CabValue* value)
{
    return value ? std::get_if<T>(value) : nullptr;
}

}  // namespace

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

void CCabinet::WalkKeys(const Visit& visit) const
{
    std::vector<std::pair<std::string, unsigned long long>> keys;
    for (const auto& entry : All()) keys.emplace_back(entry.first, entry.second.serial);
    const ASCab handle = CabHandle(*this);
    const auto identity = m_identity;
    for (const auto& [key, serial] : keys) {
        const CCabinet* const alive = Part<CCabinets>().handles.Find(handle);
        if (!alive || alive->m_identity != identity) return;
        const auto entry = All().find(key);
        if (entry == All().end() || entry->second.serial != serial) continue;
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

ASCab NewPackedCab(PackedEntries packed)
{
    return Part<CCabinets>().handles.Add(std::make_unique<CCabinet>(std::move(packed)));
}

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
