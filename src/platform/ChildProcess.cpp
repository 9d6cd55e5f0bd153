#include "platform/ChildProcess.h"

#include <chrono>
#include <memory>
#include <thread>
#include <utility>

#ifdef _WIN32
#include "platform/ChildState_win.h"
#else
#include "platform/ChildState_posix.h"
#endif

namespace platform {

std::optional<CChildProcess> CChildProcess::Start(const ChildOptions& options, FileResult* result)
{
    constexpr std::chrono::milliseconds kFirstPause{100}, kLongestPause{800};  // 1.5 s in all
    for (auto pause = kFirstPause;; pause *= 2) {
        auto state = std::make_unique<State>();
        const auto started = StartChild(options, *state);
        if (result) *result = started;
        if (started) return CChildProcess(state.release());
        if (pause > kLongestPause || !MayStartLater(started)) return std::nullopt;
        std::this_thread::sleep_for(pause);
    }
}

CChildProcess::CChildProcess(State* state) : m_state(state) {}

CChildProcess::CChildProcess(CChildProcess&& other) noexcept : m_state(std::exchange(other.m_state, nullptr)) {}

CChildProcess& CChildProcess::operator=(CChildProcess&& other) noexcept
{
    std::swap(m_state, other.m_state);
    return *this;
}

CChildProcess::~CChildProcess()
{
    if (!m_state) return;
    m_state->KillFamily();
    m_state->Collect();
    delete m_state;
}

void CChildProcess::Kill() { m_state->KillFamily(); }

int CChildProcess::ProcessId() const { return m_state->processId; }

ChildEnding CChildProcess::Ending() const { return m_state->ending; }

}  // namespace platform
