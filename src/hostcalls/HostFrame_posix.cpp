#include "hostcalls/HostFrame.h"

namespace hostcalls {

// A function of its own: nothing but its arguments is alive when the jump comes back, and none of them changes.
[[gnu::noinline]] bool EndsByJump(std::jmp_buf& target, void (*body)(void* context), void* context)
{
    if (setjmp(target) != 0) return true;
    body(context);
    return false;
}

void HOSTCALL JumpBack(void* target) { std::longjmp(*static_cast<std::jmp_buf*>(target), 1); }

}  // namespace hostcalls
