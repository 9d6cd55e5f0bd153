#include "hostcalls/HostFrame.h"

// The run-time library of 64-bit Windows has two jumps in one: a jump buffer that names its frame makes longjmp
// unwind (RtlUnwindEx with STATUS_LONGJUMP), one that names none makes it load the registers and go. We unwind,
// because
// - the host's frames lie between the raise and us. They were made by another compiler and are used to plug-ins whose
//   jumps unwind: their clean-ups run and their locks are given back. A plain jump would step over them.
// - the system then keeps its own account of the stack right (the shadow stack, where it has one), and checks that
//   the target is a frame that exists.
// Frames of this compiler are passed over by both: neither runs a destructor or a catch block of ours, so the rule
// for what may stand inside a frame is the same as elsewhere. The host never sees the buffer's inside: it calls our
// JumpBack, so both halves are of one run-time library, whichever one the host is built with.

static_assert(sizeof(std::jmp_buf) == 256, "frame, ten registers and control words, then xmm6 to xmm15");
static_assert(alignof(std::jmp_buf) == 16, "the vector registers are stored aligned");
static_assert(sizeof(_JUMP_BUFFER) == sizeof(std::jmp_buf) && offsetof(_JUMP_BUFFER, Frame) == 0 &&
                  offsetof(_JUMP_BUFFER, Rip) == 0x50 && offsetof(_JUMP_BUFFER, Xmm6) == 0x60,
              "what the system's unwinding reads out of it");

namespace hostcalls {

// A function of its own: nothing but its arguments is alive when the jump comes back, and none of them changes.
// Without the frame's address, whatever the header's own macro does, the jump would not unwind.
[[gnu::noinline]] bool EndsByJump(std::jmp_buf& target, void (*body)(void* context), void* context)
{
    if (_setjmp(target, __builtin_frame_address(0)) != 0) return true;
    body(context);
    return false;
}

void HOSTCALL JumpBack(void* target) { std::longjmp(*static_cast<std::jmp_buf*>(target), 1); }

}  // namespace hostcalls
