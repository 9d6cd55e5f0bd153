#include "platform/Memory.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <unordered_map>

namespace platform {
namespace {

std::unordered_map<std::string, std::uint64_t> ReadMemoryFigures()
{
    std::unordered_map<std::string, std::uint64_t> bytesByName;
    std::ifstream file("/proc/meminfo");
    std::string name, rest;
    std::uint64_t kibibytes = 0;
    while (file >> name >> kibibytes && std::getline(file, rest)) bytesByName[name] = kibibytes * 1024;
    return bytesByName;
}

std::uint64_t AddressSpaceLimit()
{
    constexpr std::uint64_t kUserSpace = (std::uint64_t{1} << 47) - 4096;
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return kUserSpace;
    return std::min<std::uint64_t>(limit.rlim_cur, kUserSpace);
}

std::uint64_t AddressSpaceUsed()
{
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

std::optional<MemoryStatus> GlobalMemoryStatus()
{
    auto figures = ReadMemoryFigures();
    MemoryStatus status;
    status.totalPhysical = figures["MemTotal:"];
    if (status.totalPhysical == 0) return std::nullopt;
    status.availablePhysical = std::min(figures["MemAvailable:"], status.totalPhysical);
    status.totalPageFile = status.totalPhysical + figures["SwapTotal:"];
    status.availablePageFile = status.availablePhysical + figures["SwapFree:"];
    status.totalVirtual = AddressSpaceLimit();
    status.availableVirtual = status.totalVirtual - std::min(AddressSpaceUsed(), status.totalVirtual);
    const std::uint64_t used = status.totalPhysical - status.availablePhysical;
    status.loadPercent = static_cast<unsigned>(used * 100 / status.totalPhysical);
    return status;
}

}  // namespace platform
