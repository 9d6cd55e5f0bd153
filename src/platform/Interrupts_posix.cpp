#include "platform/Interrupts.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "platform/Processes_posix.h"

namespace platform {
namespace {

std::atomic<int> count{0};
static_assert(std::atomic<int>::is_always_lock_free, "counted inside a signal handler");
// Written by the handler, so that a wait that is just about to begin ends too. Never closed.
int wakeUps[2] = {-1, -1};

void Count(int)
{
    const int error = errno;
    ++count;
    if (wakeUps[1] >= 0) (void)!write(wakeUps[1], "", 1);  // full means that it is readable already
    errno = error;
}

void CountOne(int signalNumber)
{
    struct sigaction present = {};
    // Whoever started this process wants it to outlive the terminal, or not to be interrupted in the background.
    if (sigaction(signalNumber, nullptr, &present) == 0 && present.sa_handler == SIG_IGN) return;
    struct sigaction action = {};
    action.sa_handler = &Count;
    action.sa_flags = SA_RESTART;  // a file operation under way is completed
    sigfillset(&action.sa_mask);
    sigaction(signalNumber, &action, nullptr);
}

}  // namespace

void CountInterrupts()
{
    // Without a pipe the requests still count; only the waits do not end early.
    if (wakeUps[0] < 0 && MakePipe(wakeUps)) {
        for (const int end : wakeUps) fcntl(end, F_SETFL, O_NONBLOCK);
    }
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) CountOne(signalNumber);
}

int Interrupts() { return count; }

int InterruptDescriptor() { return wakeUps[0]; }

void ForgetInterruptWakeUps()
{
    char buffer[64];
    while (wakeUps[0] >= 0 && read(wakeUps[0], buffer, sizeof buffer) > 0) {
    }
}

}  // namespace platform
