// What the supervisor tells while it works, and what comes out in the end.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/FileRecord.h"

struct PlanSummary {
    std::string run = {};
    int total = 0;
    std::uint64_t bytes = 0;
    bool oneWorker = false;
    std::string oneWorkerReason = {};
    int tooYoung = 0;  ///< files that were left out because they may still be growing
    std::vector<std::string> warnings = {};
    std::string json = {};  ///< the report of the plan as it came, one line
    int alreadyDone = 0;    ///< files that an earlier start of the same run has dealt with
};

/// How far a run is; earlier starts of the same run included.
struct RunProgress {
    int filesDone = 0, filesTotal = 0;
    std::uint64_t bytesDone = 0, bytesTotal = 0;
    int notSaved = 0;
};

enum class ExitClass { Fine = 0, Broken = 1, SomeNotSaved = 3, Stopped = 130 };

struct RunResult {
    ExitClass exit = ExitClass::Broken;
    std::string message;                      ///< why it did not start, broke or stopped; empty otherwise
    bool resumable = true;                    ///< going on may help after it broke or stopped
    PlanSummary plan;                         ///< `total` 0 when it came to none
    std::array<int, kFileOutcomes> counts{};  ///< by FileOutcome
    int remaining = 0;                        ///< files that nothing was begun with
    std::string recordPath;                   ///< where the record is; empty: none
    std::string logPath;                      ///< where the log is; empty: none was written
    std::string logProblem;                   ///< why none was written

    int Count(FileOutcome outcome) const { return counts[static_cast<std::size_t>(outcome)]; }
};

/// Everything is told on the thread that called. The default answers do nothing.
class CRunObserver {
public:
    virtual ~CRunObserver() = default;

    /// Each line of a new plan, before Planned. Not told when a run is resumed.
    virtual void FilePlanned(const PlannedFile&) {}
    /// Once, before the first file is processed.
    virtual void Planned(const PlanSummary&) {}
    /// In the order in which files are done.
    virtual void FileDone(const FileRecord&, const RunProgress&) {}
    /// The lines of the record in input order, without line end; also those of earlier starts of the same run.
    virtual void RecordLine(const std::string& /*json*/) {}
    /// What workers tell the person in front of the screen.
    virtual void Remark(const std::string&) {}
    virtual void Warning(const std::string&) {}
    /// Several times a second while workers work.
    virtual void Tick(const RunProgress&) {}
};
