// The job of a run whose input files the host hands out.
#pragma once

#include "jobs/Job.h"

#include <nlohmann/json_fwd.hpp>

/// Runs as from the environment, and tells the end as such a run does.
void DoRunJob(const nlohmann::json& job, const JobServices& services) noexcept;
