#include "platform/Interrupts.h"

#include <atomic>

#include "platform/Processes_win.h"

namespace platform {
namespace {

std::atomic<int> count{0};
HANDLE wakeUp = nullptr;  // never closed

// Called in a thread of its own.
BOOL WINAPI Count(DWORD request)
{
    ++count;
    if (wakeUp) SetEvent(wakeUp);
    // These end the process as soon as this returns, and after a time that the system knows even if it does not:
    // until then the run may come to its end.
    if (request == CTRL_CLOSE_EVENT || request == CTRL_LOGOFF_EVENT || request == CTRL_SHUTDOWN_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

}  // namespace

void CountInterrupts()
{
    if (wakeUp) return;
    // Without an event the requests still count; only the waits do not end early.
    wakeUp = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetConsoleCtrlHandler(&Count, TRUE);
}

int Interrupts() { return count; }

HANDLE InterruptEvent() { return wakeUp; }

void ForgetInterruptWakeUps()
{
    if (wakeUp) ResetEvent(wakeUp);
}

}  // namespace platform
