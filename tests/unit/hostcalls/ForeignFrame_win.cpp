#include "unit/hostcalls/ForeignFrame_win.h"

#include "platform/Windows_win.h"

namespace {
foreign::Calls calls;
}

extern "C" EXCEPTION_DISPOSITION ForeignFrameHandler(EXCEPTION_RECORD* record, void*, CONTEXT*, void*)
{
    constexpr DWORD kUnwinding = 0x02 | 0x04;  // with or without a target
    ++((record->ExceptionFlags & kUnwinding) != 0 ? calls.cleanUps : calls.searches);
    return ExceptionContinueSearch;
}

__asm__(R"(
        .text
        .globl  CallThroughForeignFrame
        .def    CallThroughForeignFrame; .scl 2; .type 32; .endef
        .seh_proc CallThroughForeignFrame
CallThroughForeignFrame:
        pushq   %rbx
        .seh_pushreg %rbx
        subq    $32, %rsp
        .seh_stackalloc 32
        .seh_handler ForeignFrameHandler, @unwind, @except
        .seh_endprologue
        movq    %rcx, %rax
        movq    %rdx, %rcx
        movq    $-1, %rbx
        call    *%rax
        nop
        addq    $32, %rsp
        popq    %rbx
        ret
        .seh_endproc
)");

namespace foreign {

Calls CallsSoFar() { return calls; }
void ForgetCalls() { calls = {}; }

}  // namespace foreign
