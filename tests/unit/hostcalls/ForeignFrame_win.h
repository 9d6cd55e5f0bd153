// A function as another compiler makes it: its frame has a clean-up that nothing but the system's unwinding runs.
#pragma once

#include "hostapi/HostTypes.h"

namespace foreign {

/// What the frame's handler was called for since ForgetCalls.
struct Calls {
    int cleanUps = 0;  // the frame was unwound
    int searches = 0;  // an exception asked whether it is caught here
};
Calls CallsSoFar();
void ForgetCalls();

}  // namespace foreign

/// Calls `procedure(argument)` from such a frame.
extern "C" void CallThroughForeignFrame(void(HOSTCALL* procedure)(void*), void* argument);
