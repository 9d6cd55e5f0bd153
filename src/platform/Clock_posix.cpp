#include "platform/Clock.h"

#include <chrono>
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

std::int64_t NanosecondsSince1970()
{
    const auto sinceStart = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count();
}

std::string UtcText(std::int64_t nanosecondsSince1970)
{
    using namespace std::chrono;
    const std::time_t seconds = floor<std::chrono::seconds>(nanoseconds(nanosecondsSince1970)).count();
    std::tm utc;
    char text[64] = "";
    if (gmtime_r(&seconds, &utc)) std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

std::uint64_t MonotonicMilliseconds()
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count());
}

}  // namespace platform
