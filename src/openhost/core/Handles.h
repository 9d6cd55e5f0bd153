#pragma once

#include <memory>
#include <unordered_map>

#include "openhost/core/Raise.h"

namespace openhost {

/// All living host objects of one kind that plug-ins hold by handle. A handle that is not (or no longer) known raises
/// genErrBadParm instead of reaching into freed memory. The number of living objects is what tests ask for.
template <class T, class Handle>
class CHandles {
public:
    explicit CHandles(const char* kind) : m_kind(kind) {}

    Handle Add(std::unique_ptr<T> object)
    {
        T* const raw = object.get();
        m_objects.emplace(raw, std::move(object));
        return HandleOf(*raw);
    }
    static Handle HandleOf(const T& object) { return reinterpret_cast<Handle>(const_cast<T*>(&object)); }

    T* Find(const void* handle) const
    {
        const auto found = m_objects.find(const_cast<void*>(handle));
        return found == m_objects.end() ? nullptr : found->second.get();
    }
    T& At(const void* handle) const
    {
        T* const object = Find(handle);
        if (!object) Raise(genErrBadParm, std::string("not a living ") + m_kind);
        return *object;
    }
    /// Takes the object out; the handle is dead from here on. Null when unknown.
    std::unique_ptr<T> Take(const void* handle)
    {
        const auto found = m_objects.find(const_cast<void*>(handle));
        if (found == m_objects.end()) return nullptr;
        auto object = std::move(found->second);
        m_objects.erase(found);
        return object;
    }
    std::size_t Live() const { return m_objects.size(); }

    template <class Visit>
    void ForEach(Visit visit) const
    {
        for (const auto& entry : m_objects) visit(*entry.second);
    }

private:
    const char* m_kind;
    std::unordered_map<void*, std::unique_ptr<T>> m_objects;
};

}  // namespace openhost
