// The job that finds the input files of a run and says whether the run may start.
#pragma once

#include <string>
#include <vector>

#include "engine/Work.h"
#include "jobs/Job.h"
#include "protocol/RunDescription.h"

// Whether a run may start without anybody losing something by surprise.

/// Why the run must not start and what to do about it; empty when it may. Looks for the folders on the disk.
[[nodiscard]] std::string SafetyProblem(const WorkFacts& facts, const PlanRequest& request);

/// What the user may not expect, although the run may start; a sentence each.
[[nodiscard]] std::vector<std::string> SafetyWarnings(const WorkFacts& facts, const PlanRequest& request);

/// Logs what a run logs before its first file and after its last, and reports each file and the plan.
void DoPlanJob(const RunOrder& order, const JobServices& services) noexcept;
