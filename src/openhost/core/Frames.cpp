#include "openhost/core/Frames.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include "openhost/core/Diagnostics.h"
#include "openhost/core/Host.h"
#include "openhost/core/Slot.h"

namespace openhost {

namespace {

void HOSTCALL JumpBack(void* environment) { std::longjmp(*static_cast<std::jmp_buf*>(environment), 1); }

}  // namespace

void CFrames::Pop()
{
    if (m_frames.empty()) {
        Diagnose("an exception frame was popped that nobody had pushed");
        return;
    }
    m_frames.pop_back();
}

void CFrames::CutTo(std::size_t depth)
{
    if (m_frames.size() > depth) m_frames.resize(depth);
}

void CFrames::Remember(ASErrorCode code, std::string message)
{
    m_lastCode = code;
    m_lastMessage = std::move(message);
}

void CFrames::LeaveThroughTop()
{
    if (m_frames.empty()) {
        std::fprintf(stderr, "ferrule-host: an error reached the host outside every frame: %s\n",
                     m_lastMessage.c_str());
        std::abort();
    }
    const Frame top = m_frames.back();
    top.restore(top.environment);
    std::abort();  // a restore procedure that returns has broken its one promise
}

// Not inlined and without objects that have destructors: a long jump ends here.
__attribute__((noinline)) ASErrorCode RunInFrame(void (*work)(void*), void* context)
{
    CFrames* const frames = &Part<CFrames>();
    const std::size_t depth = frames->Depth();
    std::jmp_buf environment;
    frames->Push(&environment, &JumpBack);
    if (setjmp(environment) != 0) {
        frames->CutTo(depth);
        return frames->LastCode() != 0 ? frames->LastCode() : static_cast<ASErrorCode>(genErrGeneral);
    }
    try {
        work(context);
    } catch (...) {  // a plug-in let an exception out: it counts as a raise, and must not leave this frame behind
        frames->CutTo(depth);
        return RememberCurrentException();
    }
    if (frames->Depth() != depth + 1) Diagnose("a plug-in left its exception frames in disorder");
    frames->CutTo(depth);
    return 0;
}

}  // namespace openhost
