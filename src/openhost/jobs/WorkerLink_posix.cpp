#include <fcntl.h>
#include <unistd.h>

#include "openhost/jobs/WorkerLink.h"

namespace openhost {

namespace {

constexpr int kFirstPrivate = 3;

}  // namespace

std::optional<std::pair<int, int>> CLineStream::TakeStandardStreams()
{
    const int input = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, kFirstPrivate);
    const int output = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, kFirstPrivate);
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    const bool taken = input >= 0 && output >= 0 && nothing >= 0 && ::dup2(nothing, STDIN_FILENO) == STDIN_FILENO &&
                       ::dup2(STDERR_FILENO, STDOUT_FILENO) == STDOUT_FILENO;
    if (nothing >= 0) ::close(nothing);
    if (taken) return std::pair(input, output);
    if (input >= 0) ::close(input);
    if (output >= 0) ::close(output);
    return std::nullopt;
}

}  // namespace openhost
