#include "platform/Clock.h"

#include <ctime>

namespace platform {

std::optional<LocalTime> LocalTimeNow()
{
    const std::time_t now = std::time(nullptr);
    std::tm local;
    if (now == static_cast<std::time_t>(-1) || !localtime_r(&now, &local)) return std::nullopt;
    return LocalTime{local.tm_mday, local.tm_mon + 1, local.tm_year + 1900,
                     local.tm_hour, local.tm_min,     local.tm_sec};
}

}  // namespace platform
