#include "openhost/core/Raise.h"

namespace openhost {

// Not inlined, and nothing alive but the arguments: the long jump ends here.
[[gnu::noinline]] bool EndsByJump(std::jmp_buf& target, void (*body)(void* context), void* context)
{
    if (setjmp(target) != 0) return true;
    body(context);
    return false;
}

void HOSTCALL JumpBack(void* target) { std::longjmp(*static_cast<std::jmp_buf*>(target), 1); }

}  // namespace openhost
