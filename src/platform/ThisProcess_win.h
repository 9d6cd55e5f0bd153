#pragma once

#include "platform/Windows_win.h"

// Shared by the services of this folder that wait for programs or take requests to end; not for callers outside.
namespace platform {

/// Signalled with each request to end this process; null while those are not counted.
HANDLE InterruptEvent();
/// Takes note of the requests so far, so that it is signalled only by the next one.
void ForgetInterruptWakeUps();

}  // namespace platform
