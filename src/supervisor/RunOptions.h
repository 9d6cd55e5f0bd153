// What the command line asks the supervisor for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "protocol/RunDescription.h"

/// How workers are started and what they may use. Paths are absolute and may be any bytes.
struct EngineOptions {
    std::string hostProgram = {};
    std::vector<std::string> plugIns = {};
    std::string passwordFile = {};                       ///< empty: none
    std::string textCacheFolder = {};                    ///< where workers keep words of documents; empty: nowhere
    int jobs = 1;                                        ///< workers at the same time, at most
    int timeoutSeconds = 300;                            ///< for each file
    std::uint64_t memoryBytes = std::uint64_t{2} << 30;  ///< for each worker
};

struct RunOptions {
    EngineOptions engine = {};
    RunDescription request = {};
    std::string recordPath = {};  ///< empty: no file
    std::string reportPath = {};  ///< of the file that the caller writes afterwards; kept from everything else
    std::string logPath = {};     ///< empty: the product's own log
    bool resume = false;          ///< goes on with the unfinished run of the same request
    bool retryFailed = false;     ///< with resume: does the files that were not saved again, too
    bool dryRun = false;          ///< touches nothing but the record, which says what would be done
    bool hashes = true;           ///< false: a dry run does without the hashes of its inputs, which take time
    /// Where plan and journal lie, instead of the folder of the request; the packed run goes beside it, and old ones
    /// are not removed. Empty: the folder of the request.
    std::string folder = {};
};

struct PlanOptions {
    EngineOptions engine = {};
    RunDescription request = {};
    std::string manifestPath = {};  ///< created or replaced; empty: only told to the observer
};

/// One part of a planned run. Doing it again finishes what was begun and repeats nothing.
struct ShardOptions {
    EngineOptions engine = {};
    std::string manifestPath = {};
    int shard = 1, shards = 1;  ///< the first is 1
    std::string journalPath = {};
    std::string recordPath = {};  ///< of this part; empty: no file
    std::string reportPath = {};  ///< as in RunOptions
    bool retryFailed = false;
};

struct MergeOptions {
    std::string manifestPath = {};
    std::vector<std::string> journalPaths = {};
    std::string recordPath = {};  ///< empty: no file
    std::string reportPath = {};  ///< as in RunOptions
    std::string logPath = {};     ///< empty: the product's own log
};
