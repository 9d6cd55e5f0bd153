// Runs over many files with workers. See docs/runs.md.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "supervisor/RunObserver.h"
#include "supervisor/RunOptions.h"

// All of them count interrupts (platform/ThisProcess.h): after the first no further file is begun, the second ends
// the workers at once. Nothing is thrown; failures are in the results.

/// Plan, workers, log and record in one go. The plan and the journal lie in the folder of the user's settings until
/// the next run of the same request; two runs of one request exclude each other.
[[nodiscard]] RunResult RunPlanned(const RunOptions& options, CRunObserver& observer);

/// Only the plan.
[[nodiscard]] RunResult PlanRun(const PlanOptions& options, CRunObserver& observer);

/// One shard of a manifest; writes the journal and nothing else. The counts, and the lines of the record that the
/// observer hears, are those of the shard.
[[nodiscard]] RunResult RunShard(const ShardOptions& options, CRunObserver& observer);

struct JobResult {
    ExitClass exit = ExitClass::Broken;  ///< Fine when the job ended with "finished"
    bool diedEarly = false;              ///< the host was gone before it told how the job ended
    std::string message = {};
    std::vector<std::string> reports = {};     ///< JSON, as they came; empty when `onReport` was given
    std::vector<std::string> errorLines = {};  ///< what the host wrote to standard error, the last 100 lines
};

/// One start of the host for any other kind of job. `job`: a JSON object, UTF-8. The host has a settings folder of
/// its own with a copy of the user's settings and writes to a log of its own, which is dropped.
[[nodiscard]] JobResult RunJob(const EngineOptions& engine, const std::string& job, CRunObserver& observer,
                               const std::function<void(const std::string& json)>& onReport = {});
