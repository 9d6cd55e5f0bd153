// Works off what is put into a folder, for as long as nobody ends it. See docs/watch.md.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "supervisor/RunObserver.h"
#include "supervisor/RunOptions.h"
#include "supervisor/watch/WatchModel.h"

struct WatchOptions {
    EngineOptions engine = {};
    RunDescription request = {};  ///< with one input, the folder
    WatchRules rules = {};
    std::string logPath = {};         ///< as in a run
    std::string recordsFolder = {};   ///< gets a record of each batch; empty: none
    std::string quarantinePath = {};  ///< empty: in the folder of the watch
    bool once = false;                ///< ends when nothing is ready any more
    bool dryRun = false;              ///< only tells which files would be taken, and ends
    bool retryQuarantined = false;    ///< what is in quarantine is new
};

struct WatchResult {
    ExitClass exit = ExitClass::Broken;
    std::string message = {};  ///< why it did not start or broke off
    std::uint64_t done = 0;    ///< files, since it started
    std::uint64_t failed = 0;  ///< attempts that failed, since it started
    std::size_t quarantined = 0;
    std::size_t waiting = 0;   ///< files that no batch has taken
    std::size_t leftOpen = 0;  ///< files of the batch that was stopped; the next start goes on with it
    std::string quarantinePath = {};
};

/// Everything is told on the thread that called. What is told of a run is told of each batch.
class CWatchObserver : public CRunObserver {
public:
    /// What happens to the watch itself, as a sentence.
    virtual void Notice(const std::string&) {}
    /// Of a trial: a file that would be taken.
    virtual void WouldTake(const std::string& /*path*/) {}
    /// A file failed, and is tried again or in quarantine.
    virtual void Trouble(const WatchedFile&) {}
};

/// Ends at the first interrupt, when the files that workers have are done; the second ends the workers at once.
/// Nothing is thrown; failures are in the result.
[[nodiscard]] WatchResult Watch(const WatchOptions& options, CWatchObserver& observer);

/// Where the watch of a folder keeps its journal, and what packed runs of its batches are beside it.
[[nodiscard]] std::string WatchFolder(const std::string& watched);
