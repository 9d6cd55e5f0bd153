// Raises, the frames that catch them, and the entries of tables that turn what a host function throws into one.
#pragma once

#include <csetjmp>
#include <cstddef>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "hostapi/HostConstants.h"
#include "hostapi/HostErrors.h"
#include "hostapi/HostRecords.h"
#include "hostapi/HostTypes.h"
#include "openhost/core/Host.h"

namespace openhost {

/// An error on its way to the plug-in. Host code throws it; the entry of the slot turns it into a raise after every
/// C++ object of the call is gone.
class CHostRaise final : public std::exception {
public:
    CHostRaise(ASErrorCode code, std::string message) : m_code(code), m_message(std::move(message)) {}
    ASErrorCode Code() const { return m_code; }
    const std::string& Message() const { return m_message; }
    const char* what() const noexcept override { return m_message.c_str(); }

private:
    ASErrorCode m_code;
    std::string m_message;
};

/// Ends the current host call with `code`. The message names what was concerned and why; it becomes the error's text
/// until the next raise. An empty message leaves the text that belongs to the code.
[[noreturn]] void Raise(ASErrorCode code, std::string message = {});

/// Raises genErrBadParm unless the condition holds.
inline void Require(bool condition, const char* what)
{
    if (!condition) Raise(genErrBadParm, what);
}

/// The text of an error code: the message of the last raise when it had this code, else the text registered for the
/// code, else empty.
std::string ErrorText(ASErrorCode code);

/// Makes a new code of the plug-in error system with a text of its own (UTF-8).
ASErrorCode RegisterErrorText(ASErrSeverity severity, std::string text);

/// Plug-ins ask for error texts with room for so many bytes.
inline constexpr std::size_t kLongestErrorText = 255;

/// The same text when it has at most `bytes` bytes; else its beginning and, twice as long, its end, with dots between
/// them. Characters of UTF-8 stay whole.
std::string ShortenedInMiddle(std::string_view text, std::size_t bytes);

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

/// Runs `body(context)`; answers true when a JumpBack to `target` ended it. A C++ exception passes through.
/// Between this frame and the jump nothing of the host's may have a destructor: none of them would run.
bool EndsByJump(std::jmp_buf& target, void (*body)(void* context), void* context);

/// The restore procedure of the host's own frames; `target` is a std::jmp_buf whose EndsByJump still runs.
void HOSTCALL JumpBack(void* target);

/// Remembers the exception that is being handled for the plug-in and answers its code. Call inside a catch block.
ASErrorCode RememberCurrentException() noexcept;

/// The entry that stands in a table for the host function Impl. Impl may throw; the entry turns what it throws into a
/// raise once every C++ object of the call is gone.
template <auto Impl>
struct CSlot;

template <class R, class... A, R (*Impl)(A...)>
struct CSlot<Impl> {
    static R HOSTCALL Entry(A... arguments)
    {
        ASErrorCode raised = 0;
        if constexpr (std::is_void_v<R>) {
            try {
                Impl(arguments...);
                return;
            } catch (...) {
                raised = RememberCurrentException();
            }
        } else {
            try {
                return Impl(arguments...);
            } catch (...) {
                raised = RememberCurrentException();
            }
        }
        static_cast<void>(raised);
        Part<CFrames>().LeaveThroughTop();
    }
};

}  // namespace openhost
