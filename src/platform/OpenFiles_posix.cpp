#include "platform/OpenFiles.h"

#include <sys/resource.h>

#include <algorithm>

namespace platform {

std::uint64_t MakeRoomForOpenFiles(std::uint64_t wanted)
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return wanted;
    if (limit.rlim_cur >= wanted) return limit.rlim_cur;
    rlimit raised = limit;
    raised.rlim_cur = std::min<rlim_t>(wanted, limit.rlim_max);
    return ::setrlimit(RLIMIT_NOFILE, &raised) == 0 ? raised.rlim_cur : limit.rlim_cur;
}

}  // namespace platform
