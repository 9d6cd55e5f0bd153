#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

struct LocalTime {
    int day, month, year;  ///< day and month from 1, year with four digits
    int hour, minute, second;
};

/// The current local time; nothing when the system cannot convert it.
std::optional<LocalTime> LocalTimeNow();

/// Nanoseconds since 1970, as the system's clock is set.
std::int64_t NanosecondsSince1970();
/// "2025-01-23T09:07:02Z"; the nanoseconds may be negative.
std::string UtcText(std::int64_t nanosecondsSince1970);

/// Local time in the form of the process's locale ("%c"), in the narrow code page; empty when it has none, or one of
/// more than 128 characters.
std::string LocalTimeText(std::int64_t nanosecondsSince1970);

/// Milliseconds from an unspecified start; never goes back.
std::uint64_t MonotonicMilliseconds();

}  // namespace platform
