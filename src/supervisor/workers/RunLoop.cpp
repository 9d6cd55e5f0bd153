#include "supervisor/workers/RunLoop.h"

#include <algorithm>
#include <set>
#include <type_traits>
#include <utility>
#include <variant>

#include "base/Names.h"
#include "platform/AtomicFile.h"
#include "platform/Clock.h"
#include "platform/ThisProcess.h"
#include "supervisor/resume/CleanUp.h"

using platform::MonotonicMilliseconds;

namespace {

constexpr int kFailedStartsAllowed = 3;
constexpr std::uint64_t kTimeoutsForEnding = 12;  // the end of a sequence may deal with all files at once
constexpr std::uint64_t kCheckPeriod = 200;       // milliseconds
constexpr std::uint64_t kMillisecondsPerSecond = 1000;
constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;

std::string MemoryText(std::uint64_t bytes)
{
    const std::uint64_t mebibytes = bytes / kMebibyte;
    if (mebibytes != 0 && mebibytes % 1024 == 0) return std::to_string(mebibytes / 1024) + " GiB";
    return std::to_string(mebibytes) + " MiB";
}

/// What a host that could not even begin has said about it.
std::string ErrorText(const CWorker& worker)
{
    std::string text = "The host " + EndingText(worker.child.Ending()) + " before it asked for a file";
    if (worker.errorLines.empty()) return text + '.';
    text += ':';
    for (const std::string& line : worker.errorLines) text += "\n" + line;
    return text;
}

template <class Message>
constexpr bool IsQuestion(const Message&)
{
    return std::is_same_v<Message, AskJob> || std::is_same_v<Message, AskInput> || std::is_same_v<Message, AskAct> ||
           std::is_same_v<Message, AskExists> || std::is_same_v<Message, AskNote>;
}

}  // namespace

CRunLoop::CRunLoop(Parts parts) : m_parts(std::move(parts)) { m_jobAnswer = JobAnswer(RunOrderJson(m_parts.order)); }

void CRunLoop::Adopt(std::unique_ptr<CWorker> worker)
{
    worker->deadline = DeadlineIn(1);
    m_workers.push_back(std::move(worker));
}

LoopEnd CRunLoop::Run()
{
    platform::CChildWatch watch;
    std::vector<platform::CChildProcess*> children;
    for (Replenish(); !m_workers.empty(); Replenish()) {
        children.clear();
        for (const auto& worker : m_workers) children.push_back(&worker->child);
        const auto news = watch.Wait(children, static_cast<int>(kCheckPeriod));
        if (news) Handle(*news);
        CheckStop();
        CheckLimits();
        Reap();
    }
    if (m_problem.empty()) m_problem = m_parts.queue.Problem();
    if (!m_problem.empty()) return LoopEnd::Broken;
    return m_stops > 0 ? LoopEnd::Stopped : LoopEnd::Finished;
}

// ---- workers

void CRunLoop::Replenish()
{
    const auto isIdle = [](const auto& worker) { return worker->waiting; };
    while (!Ending() && static_cast<int>(m_workers.size()) < m_parts.workers && !m_parts.queue.Empty() &&
           std::none_of(m_workers.begin(), m_workers.end(), isIdle))
        if (!StartWorker()) return;
}

bool CRunLoop::StartWorker()
{
    int number = 1;
    while (std::any_of(m_workers.begin(), m_workers.end(),
                       [&](const auto& worker) { return worker->place == std::to_string(number); }))
        ++number;
    std::string problem;
    auto worker = m_parts.starter.Start(std::to_string(number), &problem);
    if (!worker && !m_workers.empty()) {
        // The system lets no further one start; the others do the work.
        m_parts.workers = static_cast<int>(m_workers.size());
        m_parts.observer.Warning(problem + " The run goes on with fewer workers: " + std::to_string(m_parts.workers) +
                                 '.');
        return false;
    }
    if (!worker) {
        Break(problem);
        return false;
    }
    Adopt(std::move(worker));
    return true;
}

void CRunLoop::Reap()
{
    std::erase_if(m_workers, [](const auto& worker) { return worker->gone; });
}

void CRunLoop::WorkerEnded(CWorker& worker)
{
    worker.gone = true;
    worker.log.Read();
    const std::string ending = EndingText(worker.child.Ending());
    if (worker.told) {
        CompleteFile(worker);
    } else if (worker.hand) {
        const std::string reason =
            worker.killedFor.empty() ? "The worker " + ending + " while it processed the file." : worker.killedFor;
        FileLost(worker, reason);
    } else if (!worker.asked && (!worker.end || worker.end == RunEnd::Finished) && !Ending()) {
        if (++m_failedStarts >= kFailedStartsAllowed) Break(ErrorText(worker));
    }
    if (!worker.end) return;
    // Without a file there was nothing to end.
    if (worker.files != 0) m_parts.results.AddEpilogue(worker.log.Take().lines);
    if (worker.end != RunEnd::Finished)
        Break(worker.endMessage.empty() ? "A worker broke off the run." : worker.endMessage);
}

void CRunLoop::CheckStop()
{
    const int stops = platform::Interrupts() - m_parts.interruptsSeen;
    if (stops == m_stops) return;
    m_stops = stops;
    if (m_stops > 1)
        for (const auto& worker : m_workers) Kill(*worker, "stopped");
    HandOut();
}

void CRunLoop::CheckLimits()
{
    const std::uint64_t now = MonotonicMilliseconds();
    if (now < m_nextCheck) return;
    m_nextCheck = now + kCheckPeriod;
    m_parts.observer.Tick(m_parts.results.Progress());
    for (const auto& worker : m_workers) CheckLimitsOf(*worker, now);
}

void CRunLoop::CheckLimitsOf(CWorker& worker, std::uint64_t now)
{
    if (worker.gone || !worker.killedFor.empty()) return;
    const std::string who = worker.hand ? "The file" : "A worker without a file";
    if (worker.deadline != 0 && now >= worker.deadline)
        Kill(worker, who + " took longer than " + std::to_string(m_parts.engine.timeoutSeconds) + " s.");
    else if (worker.child.ResidentBytes() > m_parts.engine.memoryBytes)
        Kill(worker, who + " needed more than " + MemoryText(m_parts.engine.memoryBytes) + " of memory.");
}

std::uint64_t CRunLoop::DeadlineIn(std::uint64_t timeouts) const
{
    return MonotonicMilliseconds() +
           timeouts * static_cast<std::uint64_t>(m_parts.engine.timeoutSeconds) * kMillisecondsPerSecond;
}

void CRunLoop::Kill(CWorker& worker, const std::string& reason)
{
    if (worker.gone || !worker.killedFor.empty()) return;
    worker.killedFor = reason;
    worker.child.Kill();
}

void CRunLoop::Break(const std::string& problem)
{
    if (m_problem.empty()) m_problem = problem;
    HandOut();
}

// ---- what workers say

void CRunLoop::Handle(const platform::ChildNews& news)
{
    const auto place = std::find_if(m_workers.begin(), m_workers.end(),
                                    [&](const auto& worker) { return &worker->child == news.child; });
    if (place == m_workers.end()) return;
    CWorker& worker = **place;
    switch (news.event) {
        case platform::ChildEvent::Line:
            return OnLine(worker, news.text);
        case platform::ChildEvent::Error:
            return AddErrorLine(worker.errorLines, news.text);
        case platform::ChildEvent::Ended:
            WorkerEnded(worker);
            return HandOut();
    }
}

void CRunLoop::OnLine(CWorker& worker, const std::string& line)
{
    const auto message = HostMessageFrom(line);
    if (!message) return Kill(worker, "The worker wrote something that is no message.");
    std::visit(
        [&](const auto& said) {
            // What a worker tells before it dies still counts; what it asks does not.
            if (!IsQuestion(said) || worker.killedFor.empty()) On(worker, said);
        },
        *message);
}

void CRunLoop::On(CWorker& worker, const AskJob&) { Send(worker, m_jobAnswer); }

void CRunLoop::On(CWorker& worker, const AskInput&)
{
    worker.log.Read();
    if (worker.told)
        CompleteFile(worker);
    else if (worker.hand)
        FileLost(worker, "The worker did not tell what became of the file.");
    // By now it has read what it is to do.
    if (!worker.asked && m_parts.changedWork)
        if (const std::string changed = m_parts.changedWork(); !changed.empty()) Break(changed);
    worker.asked = true;
    m_failedStarts = 0;
    worker.waiting = true;
    worker.deadline = 0;
    HandOut();
}

void CRunLoop::On(CWorker&, const TellRemark& tell) { m_parts.observer.Remark(tell.text); }

void CRunLoop::On(CWorker& worker, const TellEnds& tell)
{
    worker.end = tell.end;
    worker.endMessage = tell.message;
}

void CRunLoop::On(CWorker& worker, const TellFile& tell)
{
    if (!worker.hand || worker.told || tell.record.number != worker.hand->file.number)
        return Kill(worker, "The worker told of a file that it does not have.");
    worker.told = tell.record;
    worker.log.Read();
    worker.log.MarkEnd();
}

void CRunLoop::On(CWorker& worker, const AskAct& ask)
{
    const IntendedAct& intended = ask.intended;
    const bool hasFile = worker.hand && !worker.told;
    // The end of a sequence may write reports of its own; no file depends on them.
    if (!hasFile && intended.number == 0)
        return Send(worker, AnswerToAct(m_parts.results.IsTrial() ? ActAnswer::Pretend : ActAnswer::Go));
    if (!hasFile || intended.number != worker.hand->file.number)
        return Kill(worker, "The worker wanted to act on a file that it does not have.");
    Send(worker, AnswerToAct(Decide(worker, intended)));
}

/// Whether the act would cost another input of the run, processed or not.
bool CRunLoop::WouldReplaceInput(const CWorker& worker, const Intent& intent) const
{
    const bool creates = intent.act == Act::Put || intent.act == Act::Move;
    if (!creates || worker.hand->file.group == 0) return false;
    if (intent.target == worker.hand->file.path || !m_parts.inputs.Contains(intent.target)) return false;
    const auto pretended = m_parts.results.IsTrial() ? m_parts.pretended.Exists(intent.target) : std::nullopt;
    return pretended.value_or(platform::NameExists(intent.target));
}

ActAnswer CRunLoop::Decide(CWorker& worker, Intent intent)
{
    if (WouldReplaceInput(worker, intent)) {
        worker.hand->refusal = "It would have replaced " + intent.target + ", which is an input, too.";
        return ActAnswer::Refuse;
    }
    if (m_parts.guard && !intent.target.empty() && m_parts.guard->IsOutput(intent.target)) {
        worker.hand->refusal = "It would have replaced " + intent.target + ", which this run itself writes.";
        return ActAnswer::Refuse;
    }
    const bool creates = intent.act == Act::Put || intent.act == Act::Move;
    if (creates) m_parts.queue.NoteTarget(worker.hand->file, intent.target);
    if (m_parts.results.IsTrial()) {
        m_parts.pretended.Add(intent);
        return ActAnswer::Pretend;
    }
    if (!intent.objection.empty()) {
        worker.hand->refusal = intent.objection;
        return ActAnswer::Refuse;
    }
    intent.replaces = creates && platform::NameExists(intent.target);
    if (const auto added = m_parts.results.AddIntent(intent, &intent.order); !added) {
        Break("The journal cannot be written (" + platform::ErrorText(added.errorNumber) +
              "). Nothing more is begun; the run can be resumed.");
        return ActAnswer::Refuse;
    }
    worker.hand->intents.push_back(std::move(intent));
    return ActAnswer::Go;
}

void CRunLoop::On(CWorker& worker, const AskNote& ask)
{
    worker.log.Note(ask.place);
    Send(worker, Json::object());
}

void CRunLoop::On(CWorker& worker, const AskExists& ask)
{
    Send(worker, ExistsAnswer(m_parts.results.IsTrial() ? m_parts.pretended.Exists(ask.path) : std::nullopt));
}

/// A worker that cannot be written to is going to end, which comes as news of its own.
void CRunLoop::Send(CWorker& worker, const Json& answer) { (void)worker.child.Send(LineOf(answer)); }

// ---- files

/// Answers those who wait for an input, as far as there is an answer.
void CRunLoop::HandOut()
{
    const int most = m_parts.facts.rules.movesInputs ? kFilesPerNamingWorker : kFilesPerWorker;
    for (const auto& worker : m_workers) {
        if (!worker->waiting || worker->gone || !worker->killedFor.empty()) continue;
        if (Ending() || worker->files >= most) {
            Dismiss(*worker);
        } else if (!HandTo(*worker) && (m_parts.queue.Empty() || !m_parts.queue.Problem().empty())) {
            Dismiss(*worker);
        }
    }
}

bool CRunLoop::HandTo(CWorker& worker)
{
    auto hand = m_parts.queue.Next();
    if (!hand) return false;
    worker.waiting = false;
    worker.handedOutAt = MonotonicMilliseconds();
    worker.deadline = DeadlineIn(1);
    ++worker.files;
    Send(worker, InputAnswer(JobInputFile{hand->file.number, m_parts.total, hand->toDo, hand->file.path}));
    worker.hand = std::move(hand);
    return true;
}

void CRunLoop::Dismiss(CWorker& worker)
{
    worker.waiting = false;
    worker.deadline = DeadlineIn(kTimeoutsForEnding);
    Send(worker, InputAnswer(std::nullopt));
}

void CRunLoop::CompleteFile(CWorker& worker)
{
    const FileInHand hand = std::move(*worker.hand);
    DoneFile done = CombineDone(hand, std::move(*worker.told), worker.log.Take());
    worker.hand.reset();
    worker.told.reset();
    m_parts.queue.Finish(std::move(done), hand);
}

void CRunLoop::FileLost(CWorker& worker, const std::string& reason)
{
    FileInHand hand = std::move(*worker.hand);
    worker.hand.reset();
    FileRecord record{.number = hand.file.number, .path = hand.file.path, .size = hand.file.size};
    record.outcome = FileOutcome::Stopped;
    record.message = reason;
    record.milliseconds = static_cast<std::int64_t>(MonotonicMilliseconds() - worker.handedOutAt);
    DoneFile done = CombineDone(hand, std::move(record), worker.log.Take());
    done.log.push_back("\tERROR: " + reason);
    RemoveTemporariesOf(worker, hand);
    // What is left of a stopped file is found out when the run is resumed.
    if (m_stops > 1) return (void)m_parts.queue.Finish(std::move(done), hand);
    ResumePoint point = FindResumePoint(hand.file, hand.intents, hand.results, m_parts.facts.rules);
    FileInterrupted(std::move(hand), std::move(point), std::move(done), reason);
}

void CRunLoop::FileInterrupted(FileInHand hand, ResumePoint point, DoneFile done, const std::string& reason)
{
    const std::int64_t milliseconds = done.record.milliseconds;
    if (point.left == Left::FinalAction && hand.reason.empty()) {
        if (Ending()) return (void)m_parts.queue.Finish(std::move(done), hand);
        hand.toDo = ToDo::FinalAction;
        hand.results = std::move(point.record);
        hand.log = {std::move(done.log), done.preflightBegin, done.preflightEnd};
        hand.reason = reason;
        return m_parts.queue.Return(std::move(hand));
    }
    std::string message = std::move(done.record.message);
    done.record = std::move(point.record);
    if (point.left == Left::Everything) done.record.outcome = FileOutcome::Failed;
    if (point.left == Left::FinalAction) {
        done.record.outcome = FileOutcome::Incomplete;
        const Intent& last = hand.intents.back();
        done.record.finalAction = {last.act, last.finalAction ? last.target : "", FinalActionRecord::State::Failed};
    }
    if (!done.record.message.empty()) message += ' ' + done.record.message;
    done.record.message = std::move(message);
    done.record.milliseconds = milliseconds;
    m_parts.queue.Finish(std::move(done), hand);
}

void CRunLoop::RemoveTemporariesOf(const CWorker& worker, const FileInHand& hand)
{
    std::set<std::string> folders(m_parts.facts.folders.begin(), m_parts.facts.folders.end());
    folders.insert(FolderOf(hand.file.path));
    for (const Intent& intent : hand.intents) folders.insert(FolderOf(intent.target));
    RemoveTemporaries(folders,
                      platform::TemporaryPrefix(m_parts.run) + std::to_string(worker.child.ProcessId()) + '-');
}
