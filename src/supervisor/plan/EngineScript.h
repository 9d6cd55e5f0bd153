// The script by which an engine that is there already, Slurm or GNU Parallel, does the shards of a plan on several
// machines.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

enum class ShardEngine { Slurm, Parallel };

struct EngineScript {
    ShardEngine engine = ShardEngine::Slurm;
    std::string program = {};  ///< ferrule, absolute; the environment variable FERRULE_PROGRAM names another
    std::string manifestPath =
        {};                ///< absolute; what the parts write stands beside it, under names with the run in them
    std::string run = {};  ///< letters and digits
    int shards = 1;
    std::vector<std::string> runArguments = {};  ///< for each part besides: options and values, as they are
};

/// As many that starting takes about a hundredth of the time; 1 to 1000, which is what a Slurm array takes unless its
/// settings say otherwise.
[[nodiscard]] int SuitableShards(int files, std::uint64_t bytes);

/// "plan.jsonl" and Slurm: "plan.jsonl.slurm.sh".
[[nodiscard]] std::string EngineScriptPath(const std::string& manifestPath, ShardEngine engine);

/// For a POSIX shell; paths may be any bytes.
[[nodiscard]] std::string EngineScriptText(const EngineScript& script);

/// Why the script cannot be written to its place, as a sentence; empty when it can: nothing is there, or an older
/// script.
[[nodiscard]] std::string ProblemWithScriptPlace(const std::string& path);

/// Complete or not at all. The problem as a sentence, or empty.
[[nodiscard]] std::string WriteEngineScript(const EngineScript& script);
