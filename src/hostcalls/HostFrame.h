#pragma once

#include <csetjmp>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "hostapi/HostTypes.h"

// The long jump that brings a raise of the host back into our code.

namespace hostcalls {

/// Runs `body(context)`; answers true when a JumpBack to `target` ended it. A C++ exception passes through.
/// Between this frame and the jump nothing of ours may have a destructor: none of them would run.
bool EndsByJump(std::jmp_buf& target, void (*body)(void* context), void* context);

/// What the host runs when something raises; `target` is a std::jmp_buf whose EndsByJump still runs. Never returns.
void HOSTCALL JumpBack(void* target);

}  // namespace hostcalls

// Calls into the host that may raise, and what a raise becomes on our side.

/// An error that the host reported. `text` is the host's own sentence (at most 255 characters), or a made-up one with
/// the code when the host has none; never empty.
struct HostError {
    ASErrorCode code = 0;
    std::string text;

    /// Same system and number; the severity differs from host to host and counts for nothing.
    bool Is(ASErrorCode other) const { return ((code ^ other) & 0x00FFFFFF) == 0; }
};

/// A raise of the host on its way up through our code.
///
/// The host reports errors by a long jump. It ends in the frame around the one host call, and goes on from there as
/// this exception. A value would have to be handed on by every one of several hundred calls, and one that is dropped
/// could let a document be saved without its protection. Whoever reports an error turns it into a value:
/// CatchHostError.
class CHostException : public std::exception {
public:
    explicit CHostException(HostError error) : m_error(std::move(error)) {}
    const HostError& Error() const { return m_error; }
    const char* what() const noexcept override { return m_error.text.c_str(); }

private:
    HostError m_error;
};

/// The host's text of an error code, at most 255 characters; a made-up one when the host has none. Does not throw
/// CHostException.
[[nodiscard]] std::string HostErrorText(ASErrorCode code);

namespace hostcalls {
using FrameBody = void (*)(void* context);

/// Runs `body` between a push and a pop of the frame functions in `core`; answers the raised code, 0 when all went
/// well. A C++ exception of the body passes through after the pop.
[[nodiscard]] ASErrorCode RunInFrame(HFT core, FrameBody body, void* context);

/// The same with the imported "Core" table.
[[nodiscard]] ASErrorCode RunInFrame(FrameBody body, void* context);
}  // namespace hostcalls

/// Runs `body` in one host exception frame; answers the host's error, or nothing when all went well.
/// Body: host calls and plain values only, no objects with destructors, because a raise jumps over them.
template <class Body>
[[nodiscard]] std::optional<HostError> InHostFrame(Body body)
{
    const ASErrorCode code = hostcalls::RunInFrame([](void* context) { (*static_cast<Body*>(context))(); },
                                                   const_cast<void*>(static_cast<const void*>(std::addressof(body))));
    if (code == 0) return std::nullopt;
    return HostError{code, HostErrorText(code)};
}

/// Calls one host function in a frame of its own and answers its result. Throws CHostException when the host raises.
/// The arguments are evaluated before the frame is opened, so they may come from objects with destructors.
template <class Result, class... Parameters>
Result HostCall(Result(HOSTCALL* function)(Parameters...), std::type_identity_t<Parameters>... arguments)
{
    static_assert((std::is_trivially_destructible_v<Parameters> && ...));
    if constexpr (std::is_void_v<Result>) {
        if (auto error = InHostFrame([&] { function(arguments...); })) throw CHostException(std::move(*error));
    } else {
        Result result{};
        if (auto error = InHostFrame([&] { result = function(arguments...); }))
            throw CHostException(std::move(*error));
        return result;
    }
}

/// Runs C++ code that calls the host; answers the host error that came out of it, if any. Other exceptions pass.
template <class Work>
[[nodiscard]] std::optional<HostError> CatchHostError(Work work)
{
    try {
        work();
        return std::nullopt;
    } catch (const CHostException& exception) {
        return exception.Error();
    }
}

// What the entry and the callbacks of a plug-in need from the host.

/// Wraps a code pointer for the host under this plug-in's identity. The wrapper lives until the host exits.
[[nodiscard]] ASCallback WrapCallback(void* procedure);

/// The same, keeping the procedure's type: what is registered, and what a handler record holds.
template <class Procedure>
[[nodiscard]] Procedure Callback(Procedure procedure)
{
    return reinterpret_cast<Procedure>(WrapCallback(reinterpret_cast<void*>(procedure)));
}

/// The guard of every procedure that the host calls: no C++ exception gets out. Answers what `work` answers, or
/// `fallback` when it throws.
template <class Result, class Work>
Result GuardCallback(Result fallback, Work&& work) noexcept
{
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        return fallback;  // the host understands a result, not an exception
    }
}

template <class Work>
void GuardCallback(Work&& work) noexcept
{
    try {
        std::forward<Work>(work)();
    } catch (...) {  // nobody to tell: the host expects no answer
    }
}
