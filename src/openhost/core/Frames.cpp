#include "openhost/core/Frames.h"

#include <cstdio>
#include <cstdlib>

#include "openhost/core/Diagnostics.h"
#include "openhost/core/Host.h"
#include "openhost/core/Jump.h"
#include "openhost/core/Slot.h"

namespace openhost {

namespace {

struct GuardedWork {
    void (*work)(void*);
    void* context;
    ASErrorCode thrown = 0;
};

/// A plug-in that lets an exception out: it counts as a raise.
void WorkGuarded(void* context)
{
    auto& guarded = *static_cast<GuardedWork*>(context);
    try {
        guarded.work(guarded.context);
    } catch (...) {
        guarded.thrown = RememberCurrentException();
    }
}

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

ASErrorCode RunInFrame(void (*work)(void*), void* context)
{
    CFrames* const frames = &Part<CFrames>();
    const std::size_t depth = frames->Depth();
    GuardedWork guarded{work, context};
    std::jmp_buf target;
    frames->Push(&target, &JumpBack);
    const bool raised = EndsByJump(target, &WorkGuarded, &guarded);
    const bool orderly = frames->Depth() == depth + 1;
    frames->CutTo(depth);
    if (raised) return frames->LastCode() != 0 ? frames->LastCode() : static_cast<ASErrorCode>(genErrGeneral);
    if (guarded.thrown != 0) return guarded.thrown;
    if (!orderly) Diagnose("a plug-in left its exception frames in disorder");
    return 0;
}

}  // namespace openhost
