#include <algorithm>
#include <vector>

#include "platform/ChildProcess.h"
#include "platform/ChildState_win.h"
#include "platform/Clock.h"
#include "platform/ThisProcess_win.h"
#include "platform/Windows_win.h"

#include <psapi.h>  // needs the types of the system's own header

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

namespace {

constexpr int kGlanceMilliseconds = 20;  // between looks at children beyond those that the system can wait for

void Deliver(ChildState& child, ChildEvent event, std::vector<std::string>& lines)
{
    for (auto& line : lines) child.news.push_back({event, std::move(line)});
    lines.clear();
}

void Finish(ChildState& child, ChildStream& stream, ChildEvent event)
{
    std::vector<std::string> lines;
    stream.lines.Finish(lines);
    Deliver(child, event, lines);
    stream.pipe.Close();
}

/// Takes one piece of what was written. Answers its length; nothing when there is none.
std::optional<std::size_t> TakePiece(ChildState& child, ChildStream& stream, ChildEvent event)
{
    std::string_view bytes;
    const auto found = stream.pipe.Take(bytes);
    if (found == CPipeReader::Found::Nothing) return std::nullopt;
    std::vector<std::string> lines;
    stream.lines.Add(bytes, lines);
    Deliver(child, event, lines);
    if (found == CPipeReader::Found::End) Finish(child, stream, event);
    return bytes.size();
}

// What the child itself has written is in the pipe by now. Whoever else still holds the other end is not waited for.
void Drain(ChildState& child, ChildStream& stream, ChildEvent event)
{
    if (!stream.pipe.IsOpen()) return;
    (void)TakePiece(child, stream, event);
    for (std::size_t waiting = stream.pipe.Waiting(); waiting > 0;) {
        stream.pipe.Begin();
        const auto length = TakePiece(child, stream, event);
        if (!length) break;
        waiting -= std::min(*length, waiting);
    }
    if (stream.pipe.IsOpen()) Finish(child, stream, event);
}

bool TakeEnd(ChildState& child)
{
    if (child.collected || !child.CollectIfEnded()) return false;
    Drain(child, child.output, ChildEvent::Line);
    Drain(child, child.errors, ChildEvent::Error);
    child.news.push_back({ChildEvent::Ended, {}});
    return true;
}

void Begin(ChildState& child)
{
    child.output.pipe.Begin();
    child.errors.pipe.Begin();
    (void)child.input.Begin();
}

/// Whether anything has happened.
bool Look(ChildState& child)
{
    bool anything = child.input.Take();
    anything |= TakePiece(child, child.output, ChildEvent::Line).has_value();
    anything |= TakePiece(child, child.errors, ChildEvent::Error).has_value();
    return TakeEnd(child) || anything;
}

/// Waits until there may be something to look for. False when a stop was asked for.
bool WaitForAny(const std::vector<ChildState*>& children, int milliseconds)
{
    std::vector<HANDLE> handles;
    if (const HANDLE interrupt = InterruptEvent()) handles.push_back(interrupt);
    const bool interruptible = !handles.empty();
    handles.push_back(PipeWakeUp());
    for (const ChildState* child : children) {
        if (!child->collected) handles.push_back(child->process.Get());
    }
    if (handles.size() > MAXIMUM_WAIT_OBJECTS) {
        handles.resize(MAXIMUM_WAIT_OBJECTS);
        milliseconds = std::min(milliseconds, kGlanceMilliseconds);
    }
    const DWORD found = WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE,
                                               static_cast<DWORD>(milliseconds));
    return !(interruptible && found == WAIT_OBJECT_0);
}

std::optional<ChildNews> FirstNews(const std::vector<CChildProcess*>& children,
                                   const std::vector<ChildState*>& states)
{
    for (std::size_t i = 0; i < states.size(); ++i) {
        auto& news = states[i]->news;
        if (news.empty()) continue;
        ChildNews first{children[i], news.front().event, std::move(news.front().text)};
        news.pop_front();
        return first;
    }
    return std::nullopt;
}

}  // namespace

std::optional<ChildNews> CChildWatch::Wait(const std::vector<CChildProcess*>& children, int milliseconds)
{
    std::vector<ChildState*> states;
    for (CChildProcess* child : children) states.push_back(child->m_state);
    const std::uint64_t deadline = MonotonicMilliseconds() + static_cast<std::uint64_t>(std::max(milliseconds, 0));
    for (bool last = false;;) {
        if (auto news = FirstNews(children, states); news || last) return news;
        ResetEvent(PipeWakeUp());
        for (ChildState* child : states) Begin(*child);
        bool anything = false;
        for (ChildState* child : states) anything |= Look(*child);
        const std::uint64_t now = MonotonicMilliseconds();
        last = now >= deadline;
        if (!WaitForAny(states, last || anything ? 0 : static_cast<int>(deadline - now))) {
            ForgetInterruptWakeUps();
            return std::nullopt;
        }
    }
}

}  // namespace platform
