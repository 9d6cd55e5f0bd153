#include "platform/ChildProcess.h"

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

FileResult CChildProcess::Send(std::string_view line)
{
    if (!m_state->input.IsOpen() || m_state->input.Ends()) return Failure(FileProblem::NobodyReads);
    m_state->input.Put(std::string(line) + '\n');
    (void)m_state->input.Take();
    return m_state->input.Begin();
}

void CChildProcess::CloseInput() { m_state->input.End(); }

std::uint64_t CChildProcess::ResidentBytes() const
{
    PROCESS_MEMORY_COUNTERS counters{};
    if (m_state->collected || !K32GetProcessMemoryInfo(m_state->process.Get(), &counters, sizeof counters)) return 0;
    return counters.WorkingSetSize;
}

}  // namespace platform
