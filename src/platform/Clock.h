#pragma once

#include <cstdint>
#include <optional>

namespace platform {

struct LocalTime {
    int day, month, year;  ///< day and month from 1, year with four digits
    int hour, minute, second;
};

/// The current local time; nothing when the system cannot convert it.
std::optional<LocalTime> LocalTimeNow();

/// Milliseconds from an unspecified start; never goes back.
std::uint64_t MonotonicMilliseconds();

}  // namespace platform
