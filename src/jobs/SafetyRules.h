// Whether a run may start without anybody losing something by surprise.
#pragma once

#include <string>
#include <vector>

#include "engine/Work.h"

/// Why the run must not start and what to do about it; empty when it may. Looks for the folders on the disk.
[[nodiscard]] std::string SafetyProblem(const WorkFacts& facts, const PlanRequest& request);

/// What the user may not expect, although the run may start; a sentence each.
[[nodiscard]] std::vector<std::string> SafetyWarnings(const WorkFacts& facts, const PlanRequest& request);
