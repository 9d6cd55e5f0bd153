// Does the one job that a start of the host is for.
#pragma once

#include <string>

#include "jobs/Job.h"
#include "protocol/RunDescription.h"

/// The work that the job does or plans to do; without a kind when it is no such job.
[[nodiscard]] WorkDescription JobWork(const std::string& jobText);

/// Does the job and tells how it ended, by RunEnds, exactly once; then the host is asked to close, as after a run.
/// A text that is no job, or a job of a kind that nobody knows, ends as not started. Throws nothing.
void DoJob(const std::string& jobText, JobServices services) noexcept;
