// What the entry and the callbacks of a plug-in need from the host.
#pragma once

#include "hostapi/HostTypes.h"

#include <utility>

/// Wraps a code pointer for the host under this plug-in's identity. The wrapper lives until the host exits.
[[nodiscard]] ASCallback WrapCallback(void* procedure);

/// The same, keeping the procedure's type: what is registered, and what a handler record holds.
template <class Procedure>
[[nodiscard]] Procedure Callback(Procedure procedure)
{
    return reinterpret_cast<Procedure>(WrapCallback(reinterpret_cast<void*>(procedure)));
}

/// The guard of every procedure that the host calls: no C++ exception gets out. Answers what `work` answers, or
/// `fallback` when it throws.
template <class Result, class Work>
Result GuardCallback(Result fallback, Work&& work) noexcept
{
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        return fallback;  // the host understands a result, not an exception
    }
}

template <class Work>
void GuardCallback(Work&& work) noexcept
{
    try {
        std::forward<Work>(work)();
    } catch (...) {  // nobody to tell: the host expects no answer
    }
}
