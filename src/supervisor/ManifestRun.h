// Processes the files of a manifest, or of one shard of it.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "supervisor/Supervisor.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/journal/Manifest.h"
#include "supervisor/results/OutcomeRecorder.h"
#include "supervisor/results/OutputGuard.h"
#include "supervisor/results/RunLog.h"
#include "supervisor/resume/ResumePoint.h"
#include "supervisor/workers/FilesForWorkers.h"
#include "supervisor/workers/RunLoop.h"
#include "supervisor/workers/Worker.h"

struct ManifestRunOptions {
    std::string manifestPath = {};
    std::string journalPath = {};  ///< empty: a trial run, without journal
    int shard = 1, shards = 1;
    bool retryFailed = false;
    std::string logPath = {};             ///< empty: no log
    std::string recordPath = {};          ///< empty: no file
    const COutputGuard* guard = nullptr;  ///< borrowed
    /// In place of what the manifest describes.
    std::optional<RunDescription> description = {};
    /// What to do when manifest or journal are of no use: sentences.
    std::string manifestWayOut = {}, journalWayOut = {};
    int interruptsSeen = 0;
    PlanSummary plan = {};  ///< of a new run; else run and totals are filled in
};

/// Whether the file belongs to the shard. A group is never divided.
[[nodiscard]] bool IsInShard(const PlannedFile& file, int shard, int shards);

class CManifestRun {
public:
    /// Everything is borrowed.
    CManifestRun(const EngineOptions& engine, const CWorkerStarter& starter, ManifestRunOptions options,
                 CRunObserver& observer);

    /// A worker that was started while the plan was made.
    void Adopt(std::unique_ptr<CWorker> worker) { m_early = std::move(worker); }
    [[nodiscard]] RunResult Run();

private:
    bool Load();
    bool ReadEarlier();
    bool CountFiles();
    bool PrepareKeeping();
    bool OpenOutputs();
    void Process();
    int Workers() const;
    LoopEnd RunLoop(CFilesForWorkers& queue, COutcomeRecorder& results);
    void Close(LoopEnd end, const std::string& problem, const COutcomeRecorder& results);
    void CloseOutputs();
    bool WriteReports();
    bool IsReported(int number);
    void CountOutcomes();
    bool Broken(std::string message);
    /// For good: going on would find the same.
    bool Unusable(const std::string& problem, const std::string& wayOut);
    std::optional<DoneFile> ReadDone(const DonePlace& place);
    std::optional<PlannedFile> NextFile();
    bool IsTrial() const { return m_options.journalPath.empty(); }
    std::string Tag() const;

    const EngineOptions& m_engine;
    const CWorkerStarter& m_starter;
    ManifestRunOptions m_options;
    CRunObserver& m_observer;

    ManifestHeader m_header;
    RunFacts m_facts;
    CManifestReader m_manifest;
    std::optional<CDoneIndex> m_done;
    std::optional<std::int64_t>
        m_killedAfter;  // when an earlier start without end wrote its last line of the journal
    std::optional<CJournalIndex> m_earlier;
    std::map<int, std::uint64_t> m_toldOutcomes;  // of files that may have been reported
    std::map<int, DonePlace> m_again;             // files with an outcome that are done once more
    std::uint64_t m_journalLength = 0;
    int m_filesLeft = 0;
    CGroupedInputs m_groupedInputs;
    RunProgress m_progress;
    CPretendedActs m_pretended;

    CJournalWriter m_journal;
    CJournalReader m_journalReader;
    bool m_readerOpen = false;
    CRunLog m_log;
    CRecordWriter m_record;
    std::unique_ptr<CWorker> m_early;
    std::string m_problem;
    RunResult m_result;
};
