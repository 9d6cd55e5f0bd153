#ifndef FERRULE_OPENHOST_CORE_FRAMES_H
#define FERRULE_OPENHOST_CORE_FRAMES_H

#include <string>
#include <vector>

#include "hostapi/HostRecords.h"
#include "openhost/core/Raise.h"

namespace openhost {

/// The host's stack of exception frames. Plug-in and host push frames; a raise calls the restore procedure of the top
/// frame, which never returns. A raise does not pop the frame: whoever pushed it does.
class CFrames {
public:
    void Push(void* environment, restoreEnvironProc restore) { m_frames.push_back({environment, restore}); }
    void Pop();
    std::size_t Depth() const { return m_frames.size(); }
    void CutTo(std::size_t depth);

    /// Remembers code and message for those who ask later; an empty message keeps none.
    void Remember(ASErrorCode code, std::string message);
    ASErrorCode LastCode() const { return m_lastCode; }
    const std::string& LastMessage() const { return m_lastMessage; }

    /// Leaves through the top frame. No C++ object of the host may be alive in the frames that are skipped.
    [[noreturn]] void LeaveThroughTop();

private:
    struct Frame {
        void* environment;
        restoreEnvironProc restore;
    };
    std::vector<Frame> m_frames;
    ASErrorCode m_lastCode = 0;
    std::string m_lastMessage;
};

/// Runs `work(context)` inside a frame of the host's own. Answers 0, or the code with which something inside raised.
/// Frames that the plug-in pushed and forgot are removed and reported. A C++ exception that comes out of it counts as
/// a raise.
ASErrorCode RunInFrame(void (*work)(void*), void* context);

/// Calls a procedure of a plug-in. A raise inside it becomes a CHostRaise, so that host code unwinds properly.
/// A null procedure must not be passed.
template <class R, class... P, class... A>
R CallPlugIn(R(HOSTCALL* procedure)(P...), A... arguments)
{
    // Plain values only: the frame may be left by a long jump.
    if constexpr (std::is_void_v<R>) {
        auto call = [&] { procedure(arguments...); };
        const ASErrorCode raised = RunInFrame([](void* body) { (*static_cast<decltype(call)*>(body))(); }, &call);
        if (raised != 0) Raise(raised, ErrorText(raised));
    } else {
        R result{};
        auto call = [&] { result = procedure(arguments...); };
        const ASErrorCode raised = RunInFrame([](void* body) { (*static_cast<decltype(call)*>(body))(); }, &call);
        if (raised != 0) Raise(raised, ErrorText(raised));
        return result;
    }
}

}  // namespace openhost

#endif
