// Reads the fields of a job. What is missing or of another type counts as not given.
#pragma once

#include "batchrun/RunSettings.h"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

[[nodiscard]] bool JobFlag(const nlohmann::json& job, const char* name, bool fallback);
[[nodiscard]] double JobNumber(const nlohmann::json& job, const char* name, double fallback);
/// As bytes, also when the text stands for some that are no valid text.
[[nodiscard]] std::string JobBytes(const nlohmann::json& job, const char* name);
[[nodiscard]] std::vector<std::string> JobBytesList(const nlohmann::json& job, const char* name);

/// What the job's "settings" say in place of the environment.
[[nodiscard]] EnvironmentReader EnvironmentOf(const nlohmann::json& job);
