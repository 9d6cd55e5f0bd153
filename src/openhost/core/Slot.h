#pragma once

#include <new>

#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"

namespace openhost {

/// Remembers the exception that is being handled for the plug-in and answers its code. Call inside a catch block.
ASErrorCode RememberCurrentException() noexcept;

/// The entry that stands in a table for the host function Impl. Impl may throw; the entry turns what it throws into a
/// raise once every C++ object of the call is gone.
template <auto Impl>
struct CSlot;

template <class R, class... A, R (*Impl)(A...)>
struct CSlot<Impl> {
    static R HOSTCALL Entry(A... arguments)
    {
        ASErrorCode raised = 0;
        if constexpr (std::is_void_v<R>) {
            try {
                Impl(arguments...);
                return;
            } catch (...) {
                raised = RememberCurrentException();
            }
        } else {
            try {
                return Impl(arguments...);
            } catch (...) {
                raised = RememberCurrentException();
            }
        }
        static_cast<void>(raised);
        Part<CFrames>().LeaveThroughTop();
    }
};

}  // namespace openhost
