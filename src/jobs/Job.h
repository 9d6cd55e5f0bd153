// What a job is given and what it answers.
#pragma once

#include <functional>
#include <string>

#include "batchrun/RunEvents.h"

class CLogWriter;

/// Everything is borrowed for the time of the job.
struct JobServices {
    CLogWriter& log;
    CRunEvents& events;
    CHostCloser& host;
    /// Hands one result to the host: a JSON object, UTF-8.
    std::function<void(const std::string& json)> report;
};

struct JobEnding {
    RunEnd end = RunEnd::Finished;
    std::string message;  // one sentence; empty when there is nothing to say
};
