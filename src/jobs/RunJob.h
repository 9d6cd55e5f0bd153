// The job of a run whose input files the host hands out.
#pragma once

#include "jobs/Job.h"
#include "protocol/RunDescription.h"

/// Runs as from the environment, and tells the end as such a run does.
void DoRunJob(const RunOrder& order, const JobServices& services) noexcept;
