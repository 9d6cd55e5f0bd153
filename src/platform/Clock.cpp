#include "platform/Clock.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace platform {

namespace {

std::optional<std::tm> InLocalTime(std::time_t moment)
{
    std::tm local = {};
#ifdef _WIN32
    const bool converted = localtime_s(&local, &moment) == 0;
#else
    const bool converted = localtime_r(&moment, &local) != nullptr;
#endif
    return converted ? std::optional(local) : std::nullopt;
}

}  // namespace

std::optional<LocalTime> LocalTimeNow()
{
    const std::time_t now = std::time(nullptr);
    const auto local = now == static_cast<std::time_t>(-1) ? std::nullopt : InLocalTime(now);
    if (!local) return std::nullopt;
    return LocalTime{local->tm_mday, local->tm_mon + 1, local->tm_year + 1900,
                     local->tm_hour, local->tm_min,     local->tm_sec};
}

std::string LocalTimeText(std::int64_t nanosecondsSince1970)
{
    using namespace std::chrono;
    const auto moment = floor<seconds>(nanoseconds(nanosecondsSince1970)).count();
    const auto local = InLocalTime(static_cast<std::time_t>(moment));
    char text[129];
    const std::size_t length = local ? std::strftime(text, sizeof text, "%c", &*local) : 0;
    return std::string(text, length);
}

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
