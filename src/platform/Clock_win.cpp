#include "platform/Clock.h"

#include "platform/Windows_win.h"

namespace platform {

std::optional<LocalTime> LocalTimeNow()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return LocalTime{now.wDay, now.wMonth, now.wYear, now.wHour, now.wMinute, now.wSecond};
}

}  // namespace platform
