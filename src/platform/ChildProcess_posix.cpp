#include "platform/ChildProcess.h"

#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/ChildState_posix.h"

namespace platform {
namespace {

/// Writing to a pipe whose reader is gone is an error of the write, whatever this process does with the signal.
class CWithoutPipeSignal {
public:
    CWithoutPipeSignal()
    {
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        sigset_t pending;
        m_wasPending = sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_before);
    }
    CWithoutPipeSignal(const CWithoutPipeSignal&) = delete;
    CWithoutPipeSignal& operator=(const CWithoutPipeSignal&) = delete;
    ~CWithoutPipeSignal()
    {
        const timespec noTime{};
        while (!m_wasPending && sigtimedwait(&m_pipe, nullptr, &noTime) < 0 && errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }

private:
    sigset_t m_pipe, m_before;
    bool m_wasPending = false;
};

}  // namespace

void ChildState::KillFamily() const
{
    if (collected) return;
    kill(-processId, SIGKILL);
    kill(processId, SIGKILL);
}

void ChildState::Collect()
{
    if (collected) return;
    // While the dead child is not collected its number is that of its group and of no other.
    siginfo_t facts;
    while (waitid(P_PID, static_cast<id_t>(processId), &facts, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    KillFamily();
    int status = 0;
    while (waitpid(processId, &status, 0) < 0 && errno == EINTR) {
    }
    collected = true;
    if (WIFEXITED(status)) ending.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) ending.signal = static_cast<std::uint32_t>(WTERMSIG(status));
    end = CDescriptor();
    input = CDescriptor();
    unsent.clear();
}

bool ChildState::CollectIfEnded()
{
    siginfo_t facts{};
    if (waitid(P_PID, static_cast<id_t>(processId), &facts, WEXITED | WNOWAIT | WNOHANG) != 0) {
        if (errno == EINTR) return false;
    } else if (facts.si_pid == 0) {
        return false;
    }
    Collect();
    return true;
}

FileResult ChildState::SendOn()
{
    const CWithoutPipeSignal noSignal;
    std::size_t sent = 0;
    int error = 0;
    while (sent < unsent.size() && error == 0) {
        const ssize_t count = write(input.Get(), unsent.data() + sent, unsent.size() - sent);
        if (count >= 0)
            sent += static_cast<std::size_t>(count);
        else if (errno == EAGAIN)
            break;
        else if (errno != EINTR)
            error = errno;
    }
    unsent.erase(0, error ? unsent.size() : sent);
    if (error || (inputEnds && unsent.empty())) input = CDescriptor();
    return {error};
}

FileResult CChildProcess::Send(std::string_view line)
{
    if (!m_state->input.Valid() || m_state->inputEnds) return {EPIPE};
    m_state->unsent.append(line) += '\n';
    return m_state->SendOn();
}

void CChildProcess::CloseInput()
{
    m_state->inputEnds = true;
    if (m_state->unsent.empty()) m_state->input = CDescriptor();
}

std::uint64_t CChildProcess::ResidentBytes() const
{
    if (m_state->collected) return 0;
    const Stream file = OpenStream("/proc/" + std::to_string(m_state->processId) + "/statm", "r");
    unsigned long long total = 0, resident = 0;
    if (!file || std::fscanf(file.get(), "%llu %llu", &total, &resident) != 2) return 0;
    return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace platform
