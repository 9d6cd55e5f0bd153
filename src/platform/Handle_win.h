#pragma once

#include <utility>

#include "platform/Files.h"
#include "platform/Windows_win.h"

namespace platform {

/// Owns a handle that CloseHandle closes, or none. Both values that stand for none are accepted.
class CHandle {
public:
    explicit CHandle(HANDLE adopted = nullptr) noexcept
        : m_handle(adopted == INVALID_HANDLE_VALUE ? nullptr : adopted)
    {
    }
    CHandle(CHandle&& other) noexcept : m_handle(other.Release()) {}
    CHandle& operator=(CHandle&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;
    ~CHandle()
    {
        if (m_handle) CloseHandle(m_handle);
    }

    HANDLE Get() const { return m_handle; }
    bool Valid() const { return m_handle != nullptr; }
    HANDLE Release() noexcept { return std::exchange(m_handle, nullptr); }

private:
    HANDLE m_handle;
};

/// What the last call of the system failed with. Never success.
inline FileResult LastFailure()
{
    const DWORD error = GetLastError();
    return {static_cast<int>(error != 0 ? error : ERROR_GEN_FAILURE)};
}
/// Success, or the reason of the failure, of the call that answered this.
inline FileResult ResultOf(BOOL answer) { return answer ? FileResult{} : LastFailure(); }

}  // namespace platform
