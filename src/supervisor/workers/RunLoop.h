// Hands files to workers until none is left, and deals with what becomes of the workers.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/ChildProcess.h"
#include "protocol/Messages.h"
#include "supervisor/results/OutcomeRecorder.h"
#include "supervisor/results/OutputGuard.h"
#include "supervisor/workers/FilesForWorkers.h"
#include "supervisor/workers/PretendedActs.h"
#include "supervisor/workers/Worker.h"

enum class LoopEnd { Finished, Stopped, Broken };

class CRunLoop {
public:
    /// A worker is replaced after so many files, which bounds its log and what it leaks.
    static constexpr int kFilesPerWorker = 5000;
    /// One that gives files other names opens none of them, and reads the list of all names when it starts.
    static constexpr int kFilesPerNamingWorker = 200'000;

    /// Everything is borrowed.
    struct Parts {
        const EngineOptions& engine;
        const CWorkerStarter& starter;
        const RunFacts& facts;
        const CGroupedInputs& inputs;
        CFilesForWorkers& queue;
        COutcomeRecorder& results;
        CRunObserver& observer;
        CPretendedActs& pretended;
        const COutputGuard* guard = nullptr;
        /// A sentence when the work is another one than planned.
        std::function<std::string()> changedWork = {};
        RunOrder order;          ///< for the workers
        std::string run;         ///< tag of temporary files
        int total = 0;           ///< files of the whole run
        int workers = 1;         ///< at the same time, at most
        int interruptsSeen = 0;  ///< before the run
    };
    explicit CRunLoop(Parts parts);

    /// A worker that was started early.
    void Adopt(std::unique_ptr<CWorker> worker);
    LoopEnd Run();
    /// Why it broke.
    const std::string& Problem() const { return m_problem; }

private:
    // ---- workers
    void Replenish();
    bool StartWorker();
    void Reap();
    void WorkerEnded(CWorker& worker);
    void CheckStop();
    void CheckLimits();
    void Kill(CWorker& worker, const std::string& reason);
    bool Ending() const { return m_stops > 0 || !m_problem.empty() || !m_parts.queue.Problem().empty(); }
    std::uint64_t DeadlineIn(std::uint64_t timeouts) const;
    void CheckLimitsOf(CWorker& worker, std::uint64_t now);
    void Break(const std::string& problem);

    // ---- what workers say
    void Handle(const platform::ChildNews& news);
    void OnLine(CWorker& worker, const std::string& line);
    void On(CWorker& worker, const AskJob& ask);
    void On(CWorker& worker, const AskInput& ask);
    void On(CWorker& worker, const AskAct& ask);
    void On(CWorker& worker, const AskExists& ask);
    void On(CWorker& worker, const AskNote& ask);
    void On(CWorker&, const TellStarts&) {}
    void On(CWorker&, const TellReport&) {}
    void On(CWorker& worker, const TellFile& tell);
    void On(CWorker& worker, const TellEnds& tell);
    void On(CWorker& worker, const TellRemark& tell);
    bool WouldReplaceInput(const CWorker& worker, const Intent& intent) const;
    ActAnswer Decide(CWorker& worker, Intent intent);
    void Send(CWorker& worker, const Json& answer);

    // ---- files
    void HandOut();
    bool HandTo(CWorker& worker);
    void Dismiss(CWorker& worker);
    void CompleteFile(CWorker& worker);
    void FileLost(CWorker& worker, const std::string& reason);
    void FileInterrupted(FileInHand hand, ResumePoint point, DoneFile done, const std::string& reason);
    void RemoveTemporariesOf(const CWorker& worker, const FileInHand& hand);

    Parts m_parts;
    std::vector<std::unique_ptr<CWorker>> m_workers;
    Json m_jobAnswer;
    int m_stops = 0;         // interrupts since the beginning
    int m_failedStarts = 0;  // in a row
    std::uint64_t m_nextCheck = 0;
    std::string m_problem;
};
