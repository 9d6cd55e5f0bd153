#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/ChildProcess.h"
#include "platform/ChildState_posix.h"
#include "platform/Clock.h"
#include "platform/Processes_posix.h"

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

namespace {

constexpr std::size_t kReadAtOnce = 64 * 1024;
constexpr int kGlanceMilliseconds = 20;  // between looks at children whose end the system does not tell by itself

void Deliver(ChildState& child, ChildEvent event, std::vector<std::string>& lines)
{
    for (auto& line : lines) child.news.push_back({event, std::move(line)});
    lines.clear();
}

void CloseStream(ChildState& child, ChildStream& stream, ChildEvent event)
{
    if (!stream.pipe.Valid()) return;
    std::vector<std::string> lines;
    stream.lines.Finish(lines);
    Deliver(child, event, lines);
    stream.pipe = CDescriptor();
}

/// Reads what is there, up to `most` bytes. Closes the stream at its end.
void ReadStream(ChildState& child, ChildStream& stream, ChildEvent event, std::size_t most)
{
    char buffer[kReadAtOnce];
    std::vector<std::string> lines;
    while (most > 0) {
        const ssize_t count = read(stream.pipe.Get(), buffer, std::min(most, sizeof buffer));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) break;
        if (count <= 0) return CloseStream(child, stream, event);
        stream.lines.Add({buffer, static_cast<std::size_t>(count)}, lines);
        Deliver(child, event, lines);
        most -= static_cast<std::size_t>(count);
    }
}

// What the child itself has written is in the pipe by now. Whoever else still holds the other end is not waited for.
void Drain(ChildState& child, ChildStream& stream, ChildEvent event)
{
    int waiting = 0;
    if (stream.pipe.Valid() && ioctl(stream.pipe.Get(), FIONREAD, &waiting) == 0) {
        ReadStream(child, stream, event, static_cast<std::size_t>(waiting));
    }
    CloseStream(child, stream, event);
}

void TakeEnd(ChildState& child)
{
    if (child.collected || !child.CollectIfEnded()) return;
    Drain(child, child.output, ChildEvent::Line);
    Drain(child, child.errors, ChildEvent::Error);
    child.news.push_back({ChildEvent::Ended, {}});
}

/// The descriptors of one round of waiting and what to do about each.
class CRound {
public:
    enum class Purpose { Interrupt, Output, Errors, Input, End };

    CRound()
    {
        if (const int descriptor = InterruptDescriptor(); descriptor >= 0) {
            Add(nullptr, Purpose::Interrupt, descriptor, POLLIN);
        }
    }

    void Add(ChildState& child)
    {
        AddIfOpen(child, Purpose::Output, child.output.pipe, POLLIN);
        AddIfOpen(child, Purpose::Errors, child.errors.pipe, POLLIN);
        if (!child.unsent.empty()) AddIfOpen(child, Purpose::Input, child.input, POLLOUT);
        if (child.collected) return;
        if (!child.end.Valid()) m_glances.push_back(&child);
        AddIfOpen(child, Purpose::End, child.end, POLLIN);
    }

    /// False when a stop was asked for.
    bool Wait(int milliseconds)
    {
        if (!m_glances.empty()) milliseconds = std::min(milliseconds, kGlanceMilliseconds);
        const int found = poll(m_polls.data(), m_polls.size(), milliseconds);
        for (std::size_t i = 0; found > 0 && i < m_polls.size(); ++i) {
            if (m_polls[i].revents == 0) continue;
            if (m_purposes[i].second == Purpose::Interrupt) return false;
            Act(*m_purposes[i].first, m_purposes[i].second);
        }
        for (ChildState* child : m_glances) TakeEnd(*child);
        return true;
    }

private:
    void Add(ChildState* child, Purpose purpose, int descriptor, short events)
    {
        m_polls.push_back({descriptor, events, 0});
        m_purposes.emplace_back(child, purpose);
    }
    void AddIfOpen(ChildState& child, Purpose purpose, const CDescriptor& descriptor, short events)
    {
        if (descriptor.Valid()) Add(&child, purpose, descriptor.Get(), events);
    }
    static void Act(ChildState& child, Purpose purpose)
    {
        if (purpose == Purpose::Output) ReadStream(child, child.output, ChildEvent::Line, kReadAtOnce);
        if (purpose == Purpose::Errors) ReadStream(child, child.errors, ChildEvent::Error, kReadAtOnce);
        if (purpose == Purpose::Input) (void)child.SendOn();
        if (purpose == Purpose::End) TakeEnd(child);
    }

    std::vector<pollfd> m_polls;
    std::vector<std::pair<ChildState*, Purpose>> m_purposes;
    std::vector<ChildState*> m_glances;  // whose end has to be looked for
};

std::optional<ChildNews> FirstNews(const std::vector<CChildProcess*>& children,
                                   ChildState& (*stateOf)(CChildProcess&))
{
    for (CChildProcess* child : children) {
        auto& news = stateOf(*child).news;
        if (news.empty()) continue;
        ChildNews first{child, news.front().event, std::move(news.front().text)};
        news.pop_front();
        return first;
    }
    return std::nullopt;
}

}  // namespace

std::optional<ChildNews> CChildWatch::Wait(const std::vector<CChildProcess*>& children, int milliseconds)
{
    const auto stateOf = [](CChildProcess& child) -> ChildState& { return *child.m_state; };
    const std::uint64_t deadline = MonotonicMilliseconds() + static_cast<std::uint64_t>(std::max(milliseconds, 0));
    for (bool last = false;;) {
        if (auto news = FirstNews(children, stateOf); news || last) return news;
        CRound round;
        for (CChildProcess* child : children) round.Add(stateOf(*child));
        const std::uint64_t now = MonotonicMilliseconds();
        last = now >= deadline;
        if (!round.Wait(last ? 0 : static_cast<int>(deadline - now))) {
            ForgetInterruptWakeUps();
            return std::nullopt;
        }
    }
}

}  // namespace platform
