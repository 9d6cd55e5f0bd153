#include "platform/Processes_posix.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

void ResetSignals()
{
    for (int number = 1; number < NSIG; ++number) signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

CSignalsBlocked::CSignalsBlocked()
{
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &m_before);
}

CSignalsBlocked::~CSignalsBlocked()
{
    const int error = errno;
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    errno = error;
}

int AboveStandardStreams(int descriptor)
{
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(descriptor);
    errno = error;
    return copy;
}

bool MakePipe(int (&ends)[2])
{
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    for (int& end : ends) end = AboveStandardStreams(end);
    if (ends[0] >= 0 && ends[1] >= 0) return true;
    const int error = errno;
    for (int& end : ends) {
        if (end >= 0) close(end);
        end = -1;
    }
    errno = error;
    return false;
}

}  // namespace platform
