// The job that finds the input files of a run and says whether the run may start.
#pragma once

#include "jobs/Job.h"
#include "protocol/RunDescription.h"

/// Logs what a run logs before its first file and after its last, and reports each file and the plan.
void DoPlanJob(const RunOrder& order, const JobServices& services) noexcept;
