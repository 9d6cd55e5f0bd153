#include "openhost/core/Raise.h"

// A buffer that names its frame makes longjmp unwind. That is how plug-ins of any compiler are jumped over: those
// whose frames have clean-ups expect them to run. Frames of the host's own compiler are passed over without a
// destructor.

static_assert(sizeof(std::jmp_buf) == 256 && alignof(std::jmp_buf) == 16, "what the system's unwinding reads");

namespace openhost {

// Not inlined, and nothing alive but the arguments: the long jump ends here.
[[gnu::noinline]] bool EndsByJump(std::jmp_buf& target, void (*body)(void* context), void* context)
{
    if (_setjmp(target, __builtin_frame_address(0)) != 0) return true;
    body(context);
    return false;
}

void HOSTCALL JumpBack(void* target) { std::longjmp(*static_cast<std::jmp_buf*>(target), 1); }

}  // namespace openhost
