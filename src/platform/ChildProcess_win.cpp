#include "platform/ChildProcess.h"

#include <memory>
#include <utility>

#include "platform/ChildState_win.h"
#include "platform/FileProblem.h"
#include "platform/Windows_win.h"

#include <psapi.h>

namespace platform {
namespace {

constexpr UINT kExitCodeOfKilled = 0xE0464B39;  // no program's own
constexpr std::uint32_t kKillSignal = 9;
constexpr DWORD kFirstException = 0xC0000000;

ChildEnding EndingOf(DWORD exitCode)
{
    ChildEnding ending;
    if (exitCode == kExitCodeOfKilled)
        ending.signal = kKillSignal;
    else if (exitCode >= kFirstException)
        ending.signal = exitCode;
    else
        ending.exitCode = static_cast<int>(exitCode);
    return ending;
}

}  // namespace

void ChildState::KillFamily() const { TerminateJobObject(family.Get(), kExitCodeOfKilled); }

void ChildState::Collect()
{
    if (collected) return;
    WaitForSingleObject(process.Get(), INFINITE);
    KillFamily();
    DWORD exitCode = 0;
    GetExitCodeProcess(process.Get(), &exitCode);
    ending = EndingOf(exitCode);
    collected = true;
    input.Close();
}

bool ChildState::CollectIfEnded()
{
    if (WaitForSingleObject(process.Get(), 0) != WAIT_OBJECT_0) return false;
    Collect();
    return true;
}

std::optional<CChildProcess> CChildProcess::Start(const ChildOptions& options, FileResult* result)
{
    auto state = std::make_unique<State>();
    const auto started = StartChild(options, *state);
    if (result) *result = started;
    if (!started) return std::nullopt;
    return CChildProcess(state.release());
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

FileResult CChildProcess::Send(std::string_view line)
{
    if (!m_state->input.IsOpen() || m_state->input.Ends()) return Failure(FileProblem::NobodyReads);
    m_state->input.Put(std::string(line) + '\n');
    (void)m_state->input.Take();
    return m_state->input.Begin();
}

void CChildProcess::CloseInput() { m_state->input.End(); }

void CChildProcess::Kill() { m_state->KillFamily(); }

int CChildProcess::ProcessId() const { return m_state->processId; }

std::uint64_t CChildProcess::ResidentBytes() const
{
    PROCESS_MEMORY_COUNTERS counters{};
    if (m_state->collected || !K32GetProcessMemoryInfo(m_state->process.Get(), &counters, sizeof counters)) return 0;
    return counters.WorkingSetSize;
}

ChildEnding CChildProcess::Ending() const { return m_state->ending; }

}  // namespace platform
