#include "cli/RunCommands.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "cli/Arguments.h"
#include "cli/Console.h"
#include "cli/ReportCommand.h"
#include "cli/RunArguments.h"
#include "cli/RunPrinter.h"
#include "cli/Summary.h"
#include "platform/Paths.h"
#include "platform/ThisProcess.h"
#include "protocol/FileRecord.h"
#include "protocol/Json.h"
#include "report/RunSums.h"
#include "supervisor/Merge.h"
#include "supervisor/Supervisor.h"
#include "supervisor/plan/EngineScript.h"

namespace cli {

namespace {

void Say(const Screen& screen, const std::string& text) { *screen.messages << text << std::flush; }

/// Everything that ends up on standard error about how it went; the exit code.
int Conclude(const RunResult& result, CRunPrinter& printer, const CArguments& arguments, const Screen& screen,
             const SummaryFacts& facts)
{
    printer.Finish();
    if (!result.message.empty()) Say(screen, "ferrule: " + PrintableLines(result.message) + "\n");
    Say(screen, arguments.Has("--quiet") ? TroubleText(result, printer, facts) : SummaryText(result, printer, facts));
    if (arguments.Has("--json")) *screen.data << SummaryJson(result) << '\n';
    return static_cast<int>(result.exit);
}

void SayExtensions(const CArguments& arguments, const Screen& screen)
{
    if (arguments.Has("--quiet")) return;
    const std::string list = arguments.Text("--ext");
    if (EqualsIgnoreCaseAscii(Trim(list), "all")) return;
    std::string patterns;
    for (const std::string& piece : Split(list, ",;")) patterns += " *." + Trim(piece);
    Say(screen, "Looking for" + patterns + "\n");
}

void RefuseTwoKindsOfData(const CArguments& arguments)
{
    if (arguments.Has("--json") && arguments.Text("--record") == "-")
        FailUsage("--json and --record - both write to standard output; give the record a file");
}

/// Null without a report.
std::unique_ptr<CRunSums> SumsFor(const std::string& reportPath)
{
    return reportPath.empty() ? nullptr : std::make_unique<CRunSums>();
}

/// Who gets the lines of the record: the sums, when there are some, and `other`, unless it is empty.
RecordTaker TakerFor(CRunSums* sums, RecordTaker other = {})
{
    if (!sums) return other;
    return [sums, other = std::move(other)](const std::string& json) {
        if (other) other(json);
        const auto object = ParseObject(json);
        if (const auto record = object ? FileRecordFrom(*object) : std::nullopt) sums->Add(*record);
    };
}

int RunOfShard(const CArguments& arguments, const Screen& screen)
{
    ShardOptions options = ReadShard(arguments);
    FitWorkers(options.engine, arguments, screen);
    const std::string record = OptionalPath(arguments, "--record");
    if (record != "-") options.recordPath = record;
    options.reportPath = ReportPlace(arguments);
    const auto sums = SumsFor(options.reportPath);
    const PrintOptions print{.quiet = arguments.Has("--quiet"),
                             .dryRun = false,
                             .recordToData = record == "-",
                             .jobs = options.engine.jobs,
                             .part = options.shards > 1 ? arguments.Text("--shard") : ""};
    CRunPrinter printer(screen, print);
    printer.TellRecord(TakerFor(sums.get()));
    const RunResult result = RunShard(options, printer);
    if (sums) WriteReportOfRun(*sums, result, options.reportPath, arguments, screen);
    return Conclude(result, printer, arguments, screen,
                    {.dryRun = false, .canResume = false, .kept = options.journalPath});
}

int RunOfSequence(const CArguments& arguments, const Screen& screen)
{
    if (arguments.Has("--shard") || arguments.Has("--journal"))
        FailUsage("--shard and --journal belong to a plan; name it with --manifest");
    const RunOptions options = ReadRun(arguments, ReadRequest(arguments, ReadSequenceWork(arguments)));
    SayExtensions(arguments, screen);
    return RunAndReport(options, arguments, screen);
}

}  // namespace

void FitWorkers(EngineOptions& engine, const CArguments& arguments, const Screen& screen)
{
    constexpr std::uint64_t kFilesOfRun = 32, kFilesOfWorker = 6;
    const std::uint64_t wanted = kFilesOfRun + kFilesOfWorker * static_cast<std::uint64_t>(engine.jobs);
    const std::uint64_t room = platform::MakeRoomForOpenFiles(wanted);
    if (room >= wanted) return;
    const std::string why = "only " + std::to_string(room) + " files may be open at a time";
    const std::string help = "ulimit -n allows more";
    if (room < kFilesOfRun + kFilesOfWorker) FailStart(why + ", which is too few for a single worker; " + help);
    engine.jobs = static_cast<int>((room - kFilesOfRun) / kFilesOfWorker);
    if (!arguments.Has("--quiet"))
        Say(screen, "ferrule: " + why + ", so that there are at most " +
                        Counted(static_cast<std::uint64_t>(engine.jobs), "worker", "workers") + "; " + help + "\n");
}

int RunAndReport(RunOptions options, const CArguments& arguments, const Screen& screen, bool goesOn,
                 RecordTaker onRecord)
{
    RefuseTwoKindsOfData(arguments);
    FitWorkers(options.engine, arguments, screen);
    const std::string record = OptionalPath(arguments, "--record");
    options.reportPath = ReportPlace(arguments);
    const auto sums = SumsFor(options.reportPath);
    const PrintOptions print{.quiet = arguments.Has("--quiet"),
                             .dryRun = options.dryRun,
                             .recordToData = record == "-",
                             .jobs = options.engine.jobs};
    if (record != "-") options.recordPath = record;
    CRunPrinter printer(screen, print);
    printer.TellRecord(TakerFor(sums.get(), std::move(onRecord)));
    const RunResult result = RunPlanned(options, printer);
    if (sums) WriteReportOfRun(*sums, result, options.reportPath, arguments, screen);
    return Conclude(result, printer, arguments, screen,
                    {.dryRun = options.dryRun, .canResume = goesOn, .kept = result.recordPath});
}

int RunCommand(const CArguments& arguments, const Screen& screen)
{
    RefuseTwoKindsOfData(arguments);
    return arguments.Has("--manifest") ? RunOfShard(arguments, screen) : RunOfSequence(arguments, screen);
}

namespace {

/// The script for "--engine" of a plan that is still to be made; nothing without that option.
std::optional<EngineScript> ReadEngineScript(const CArguments& arguments, const PlanOptions& options)
{
    if (!arguments.Has("--engine")) {
        if (arguments.Has("--shards")) FailUsage("--shards belongs to --engine, which says what does the parts");
        return std::nullopt;
    }
    EngineScript script;
    script.engine = arguments.Text("--engine") == "slurm" ? ShardEngine::Slurm : ShardEngine::Parallel;
    script.program = platform::ExecutablePath();
    script.manifestPath = options.manifestPath;
    // What was not said is as it is by default, on each machine.
    if (arguments.Has("--host")) script.runArguments = {"--host", options.engine.hostProgram};
    if (arguments.Has("--plugin"))
        for (const std::string& plugIn : options.engine.plugIns)
            script.runArguments.insert(script.runArguments.end(), {"--plugin", plugIn});
    if (!options.engine.passwordFile.empty())
        script.runArguments.insert(script.runArguments.end(), {"--password-file", options.engine.passwordFile});
    const std::string problem = ProblemWithScriptPlace(EngineScriptPath(script.manifestPath, script.engine));
    if (!problem.empty()) FailStart(problem);
    return script;
}

void CompleteScript(EngineScript& script, const CArguments& arguments, const PlanSummary& plan)
{
    script.run = plan.run;
    script.shards = arguments.Has("--shards") ? static_cast<int>(arguments.Number("--shards"))
                                              : SuitableShards(plan.total, plan.bytes);
    script.shards = plan.oneWorker ? 1 : std::min(script.shards, std::max(plan.total, 1));
}

}  // namespace

int PlanCommand(const CArguments& arguments, const Screen& screen)
{
    PlanOptions options;
    options.request = ReadRequest(arguments, ReadSequenceWork(arguments));
    options.engine = ReadEngine(arguments);
    options.manifestPath = FilePath(arguments, "--manifest");
    auto script = ReadEngineScript(arguments, options);
    SayExtensions(arguments, screen);
    const bool quiet = arguments.Has("--quiet");
    CRunPrinter printer(screen, {.quiet = true, .dryRun = false, .recordToData = false, .jobs = 1, .part = ""});
    const RunResult result = PlanRun(options, printer);
    if (!result.message.empty()) Say(screen, "ferrule: " + PrintableLines(result.message) + "\n");
    if (result.exit != ExitClass::Fine) return static_cast<int>(result.exit);
    if (script) {
        CompleteScript(*script, arguments, result.plan);
        if (const std::string problem = WriteEngineScript(*script); !problem.empty()) FailStart(problem);
    }
    if (!quiet) {
        Say(screen, PlanSentence(result.plan) + "\n");
        if (result.plan.oneWorker) Say(screen, "One part and one worker only: " + result.plan.oneWorkerReason + "\n");
        Say(screen, "Plan: " + options.manifestPath + "\n");
        if (script)
            Say(screen, "Script for " + Counted(static_cast<std::uint64_t>(script->shards), "part", "parts") + ": " +
                            EngineScriptPath(script->manifestPath, script->engine) + "\n");
    }
    if (arguments.Has("--json")) *screen.data << result.plan.json << '\n';
    return kExitFine;
}

int MergeCommand(const CArguments& arguments, const Screen& screen)
{
    RefuseTwoKindsOfData(arguments);
    MergeOptions options;
    options.manifestPath = FilePath(arguments, "--manifest");
    for (const std::string& journal : arguments.Operands())
        options.journalPaths.push_back(platform::AbsolutePath(journal));
    const std::string record = OptionalPath(arguments, "--record");
    if (record != "-") options.recordPath = record;
    options.logPath = FilePath(arguments, "--log");
    options.reportPath = ReportPlace(arguments);
    const auto sums = SumsFor(options.reportPath);
    CRunPrinter printer(
        screen, {.quiet = arguments.Has("--quiet"), .dryRun = false, .recordToData = record == "-", .jobs = 1});
    printer.TellRecord(TakerFor(sums.get()));
    const RunResult result = MergeShards(options, printer);
    if (sums) WriteReportOfRun(*sums, result, options.reportPath, arguments, screen);
    return Conclude(result, printer, arguments, screen,
                    {.dryRun = false, .canResume = false, .kept = result.recordPath});
}

}  // namespace cli
