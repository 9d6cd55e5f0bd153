#ifndef FERRULE_OPENHOST_CORE_JUMP_H
#define FERRULE_OPENHOST_CORE_JUMP_H

#include <csetjmp>

#include "hostapi/HostTypes.h"

namespace openhost {

/// Runs `body(context)`; answers true when a JumpBack to `target` ended it. A C++ exception passes through.
/// Between this frame and the jump nothing of the host's may have a destructor: none of them would run.
bool EndsByJump(std::jmp_buf& target, void (*body)(void* context), void* context);

/// The restore procedure of the host's own frames; `target` is a std::jmp_buf whose EndsByJump still runs.
void HOSTCALL JumpBack(void* target);

}  // namespace openhost

#endif
