// Memory that changes hands between the host and us. For this folder only.
#pragma once

#include "hostcalls/HostSlot.h"

#include <cstring>
#include <string>
#include <utility>

/// Owns one block of the host's memory, or nothing.
class CHostMemory {
public:
    explicit CHostMemory(void* adopted) noexcept : m_block(adopted) {}
    CHostMemory(CHostMemory&& other) noexcept : m_block(other.Release()) {}
    CHostMemory& operator=(CHostMemory&&) = delete;
    ~CHostMemory()
    {
        if (m_block) hostcalls::Quietly([this] { HostCall(HOST_SLOT(AcroSupport, ASfree), m_block); });
    }

    /// A block with a copy of the bytes and a zero behind them. Throws CHostException when the memory runs out.
    [[nodiscard]] static CHostMemory CopyOf(const std::string& bytes)
    {
        CHostMemory block(HostCall(HOST_SLOT(AcroSupport, ASmalloc), bytes.size() + 1));
        if (!block.m_block) hostcalls::ThrowHostError(genErrNoMemory);
        std::memcpy(block.m_block, bytes.c_str(), bytes.size() + 1);
        return block;
    }

    void* Get() const { return m_block; }
    char* Text() const { return static_cast<char*>(m_block); }
    void* Release() noexcept { return std::exchange(m_block, nullptr); }  // handed over

private:
    void* m_block;
};
