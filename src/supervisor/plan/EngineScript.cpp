#include "supervisor/plan/EngineScript.h"

#include <algorithm>
#include <string_view>

#include "base/Text.h"
#include "platform/AtomicFile.h"
#include "platform/Files.h"

namespace {

// The second line of every script: by it an older one is known, which may be replaced.
constexpr std::string_view kMark = "#!/bin/sh\n# An engine's script of ferrule plan, version 1\n";

// What follows is the same for all engines. A part that is done again goes on where its journal ends, so that engines
// may repeat what they have lost. Files that failed are no reason to repeat it: the merge tells of them.
constexpr std::string_view kParts = R"sh(
if [ -n "${FERRULE_PROGRAM:-}" ]; then ferrule=$FERRULE_PROGRAM; fi

journal() { printf '%s.%s.%s-of-%s.journal' "$manifest" "$run" "$1" "$shards"; }

# part SHARD WORKERS [OPTION...]
part() {
    shard=$1 workers=$2
    shift 2
    status=0
    "$ferrule" run --manifest "$manifest" --shard "$shard/$shards" --journal "$(journal "$shard")" \
        --jobs "$workers" --quiet "$@" || status=$?
    [ "$status" -ne 3 ] || status=0
    return "$status"
}

merge() {
    set --
    shard=1
    while [ "$shard" -le "$shards" ]; do
        set -- "$@" "$(journal "$shard")"
        shard=$((shard + 1))
    done
    exec "$ferrule" merge --manifest "$manifest" "$@" --record "$manifest.$run.record.jsonl"
}
)sh";

constexpr std::string_view kSlurm = R"sh(
case "${1:-}" in
    part)
        # Slurm says how many processors and how much memory there is.
        workers=${SLURM_CPUS_PER_TASK:-1}
        memory=
        if [ -n "${SLURM_MEM_PER_CPU:-}" ]; then memory=$SLURM_MEM_PER_CPU
        elif [ "${SLURM_MEM_PER_NODE:-0}" -gt 0 ]; then memory=$((SLURM_MEM_PER_NODE / workers)); fi
        status=0
        part "$SLURM_ARRAY_TASK_ID" "$workers" ${memory:+--memory "${memory}M"}@ARGUMENTS@ || status=$?
        # What was stopped, by scancel for example, stays so.
        case "$status" in 0 | 130 | 143) exit "$status" ;; esac
        if [ "${SLURM_RESTART_COUNT:-0}" -lt 3 ]; then scontrol requeue "${SLURM_ARRAY_JOB_ID}_$SLURM_ARRAY_TASK_ID"; fi
        exit "$status" ;;
    merge) merge ;;
esac

# In this order, so that what the caller says counts.
array=$(sbatch --parsable --requeue --open-mode=append --job-name=ferrule --output=ferrule-%A_%a.out "$@" \
    --array="1-$shards" "$script" part) || exit 1
array=${array%%;*}
merging=$(sbatch --parsable --requeue --open-mode=append --job-name=ferrule-merge --output=ferrule-%j.out "$@" \
    --dependency="afterany:$array" "$script" merge) || {
    echo "The parts are job $array, but their merge was not taken; when they are done: sh $script merge" >&2
    exit 1
}
echo "parts: job $array, merge: job ${merging%%;*}"
)sh";

constexpr std::string_view kParallel = R"sh(
case "${1:-}" in
    part)
        part "$2" 1@ARGUMENTS@
        exit ;;
    merge) merge ;;
esac

# Values are quoted by parallel, what stands in its command is not: so the script's name is a value, too. Each ends with a zero
# byte, because names may have line ends.
status=0
PARALLEL_SHELL=/bin/sh
export PARALLEL_SHELL
seq "$shards" | tr '\n' '\0' | parallel --null --retries 3 "$@" sh '{1}' part '{2}' ::: "$script" :::: - || status=$?
[ "$status" -eq 0 ] || echo "Parts that did not come to their end: $status. Calling this script again goes on with them." >&2
merge
)sh";

std::string Quoted(const std::string& text) { return '\'' + ReplaceAll(text, "'", "'\\''") + '\''; }

std::string Assignment(const char* name, const std::string& value)
{
    return std::string(name) + '=' + Quoted(value) + '\n';
}

std::string Problem(const std::string& path, const platform::FileResult& result)
{
    return path + ": " + platform::ErrorText(result.errorNumber);
}

}  // namespace

int SuitableShards(int files, std::uint64_t bytes)
{
    // Seconds, as measured with protection by AES-256; most work takes longer. Every part reads the whole plan.
    constexpr double kStart = 0.25, kStartPerFile = 5e-6, kWorkPerFile = 0.004, kWorkPerByte = 0.09e-6;
    const double count = files;
    const double start = kStart + kStartPerFile * count;
    const double work = kWorkPerFile * count + kWorkPerByte * static_cast<double>(bytes);
    return static_cast<int>(std::clamp(work / (100 * start), 1.0, 1000.0));
}

std::string EngineScriptPath(const std::string& manifestPath, ShardEngine engine)
{
    return manifestPath + (engine == ShardEngine::Slurm ? ".slurm.sh" : ".parallel.sh");
}

std::string EngineScriptText(const EngineScript& script)
{
    const bool slurm = script.engine == ShardEngine::Slurm;
    std::string arguments;
    for (const std::string& argument : script.runArguments) arguments += ' ' + Quoted(argument);
    std::string text(kMark);
    text += slurm ? "# usage: sh SCRIPT [OPTION OF sbatch...]       such as --partition=long --cpus-per-task=4\n"
                  : "# usage: sh SCRIPT [OPTION OF parallel...]     such as --sshlogin node1,node2\n";
    text += "# Names of files may be any bytes, so some may not be text.\nset -u\n";
    text += Assignment("ferrule", script.program) + Assignment("manifest", script.manifestPath) +
            Assignment("script", EngineScriptPath(script.manifestPath, script.engine)) +
            Assignment("run", script.run) + "shards=" + std::to_string(script.shards) + '\n';
    text += kParts;
    text += ReplaceAll(slurm ? kSlurm : kParallel, "@ARGUMENTS@", arguments);
    return text;
}

std::string ProblemWithScriptPlace(const std::string& path)
{
    std::string start;
    const auto read = platform::ReadPieces(path, [&start](std::string_view bytes) {
        start = bytes.substr(0, kMark.size());
        return false;
    });
    if (read && (start.empty() || start == kMark)) return "";
    if (!read && !platform::FileExists(path) && !platform::FolderExists(path)) return "";
    return path + " is there and was not written by \"ferrule plan\"; move it away, or give the plan another name.";
}

std::string WriteEngineScript(const EngineScript& script)
{
    const std::string path = EngineScriptPath(script.manifestPath, script.engine);
    const std::string text = EngineScriptText(script);
    platform::CAtomicFile file(path, platform::Existing::Replace);
    file.Write(text.data(), text.size());
    const platform::FileResult written = file.Commit();
    return written ? std::string() : Problem(path, written);
}
