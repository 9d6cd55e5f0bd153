#pragma once

#include <cstdint>
#include <optional>

namespace platform {

/// The machine's memory in bytes.
struct MemoryStatus {
    std::uint64_t totalPhysical = 0, availablePhysical = 0;
    std::uint64_t totalVirtual = 0, availableVirtual = 0;    ///< address space of this process
    std::uint64_t totalPageFile = 0, availablePageFile = 0;  ///< physical memory and swap together
    unsigned loadPercent = 0;                                ///< used part of the physical memory, 0 to 100
};

std::optional<MemoryStatus> GlobalMemoryStatus();

}  // namespace platform
