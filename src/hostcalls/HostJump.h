// The long jump that brings a raise of the host back into our code.
#pragma once

#include "hostapi/HostTypes.h"

#include <csetjmp>

namespace hostcalls {

/// Runs `body(context)`; answers true when a JumpBack to `target` ended it. A C++ exception passes through.
/// Between this frame and the jump nothing of ours may have a destructor: none of them would run.
bool EndsByJump(std::jmp_buf& target, void (*body)(void* context), void* context);

/// What the host runs when something raises; `target` is a std::jmp_buf whose EndsByJump still runs. Never returns.
void HOSTCALL JumpBack(void* target);

}  // namespace hostcalls
