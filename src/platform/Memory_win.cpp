#include "platform/Memory.h"

#include "platform/Windows_win.h"

namespace platform {

std::optional<MemoryStatus> GlobalMemoryStatus()
{
    MEMORYSTATUSEX found;
    found.dwLength = sizeof found;
    if (!GlobalMemoryStatusEx(&found)) return std::nullopt;
    return MemoryStatus{.totalPhysical = found.ullTotalPhys,
                        .availablePhysical = found.ullAvailPhys,
                        .totalVirtual = found.ullTotalVirtual,
                        .availableVirtual = found.ullAvailVirtual,
                        .totalPageFile = found.ullTotalPageFile,
                        .availablePageFile = found.ullAvailPageFile,
                        .loadPercent = found.dwMemoryLoad};
}

}  // namespace platform
