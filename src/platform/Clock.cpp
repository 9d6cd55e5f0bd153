#include "platform/Clock.h"

#include <chrono>
#include <cstdio>

namespace platform {

std::int64_t NanosecondsSince1970()
{
    const auto sinceStart = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count();
}

std::string UtcText(std::int64_t nanosecondsSince1970)
{
    using namespace std::chrono;
    const sys_time<nanoseconds> moment{nanoseconds(nanosecondsSince1970)};
    const auto day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss time(floor<seconds>(moment - day));
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

std::uint64_t MonotonicMilliseconds()
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count());
}

}  // namespace platform
