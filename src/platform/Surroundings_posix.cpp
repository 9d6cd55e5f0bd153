#include "platform/Surroundings.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace platform {
namespace {

bool IsClosed(int descriptor) { return ::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF; }

/// The lowest free number is the one that is closed, because they are filled in order.
void FillStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (IsClosed(descriptor) && ::open("/dev/null", O_RDWR) != descriptor) std::_Exit(1);
    }
}

// A handler rather than SIG_IGN, which started programs would inherit.
void DoNothing(int) {}

void TakeAsError(int signalNumber)
{
    struct sigaction present = {};
    if (::sigaction(signalNumber, nullptr, &present) == 0 && present.sa_handler == SIG_IGN) return;
    struct sigaction action = {};
    action.sa_handler = &DoNothing;
    action.sa_flags = SA_RESTART;
    ::sigaction(signalNumber, &action, nullptr);
}

}  // namespace

void SettleSurroundings()
{
    FillStandardStreams();
    TakeAsError(SIGPIPE);
    TakeAsError(SIGXFSZ);
}

}  // namespace platform
