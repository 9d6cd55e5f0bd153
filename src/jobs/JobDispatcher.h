// Does the one job that a start of the host is for.
#pragma once

#include "batchrun/RunSettings.h"
#include "jobs/Job.h"

#include <string>

/// The environment that the settings of a job stand for: what they do not name is not set. A text that is no job
/// yields an empty environment.
[[nodiscard]] EnvironmentReader JobEnvironment(const std::string& jobText);

/// Does the job and tells how it ended, by RunEnds, exactly once; then the host is asked to close, as after a run.
/// A text that is no job, or a job of a kind that nobody knows, ends as not started. Throws nothing.
void DoJob(const std::string& jobText, JobServices services) noexcept;
