#include <utility>

#include "openhost/core/Host.h"
#include "openhost/values/Cabinet.h"

namespace openhost {

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
