#include "cli/RunCommands.h"

#include <fstream>
#include <utility>

#include "cli/CommandError.h"
#include "cli/Printable.h"
#include "cli/RunArguments.h"
#include "cli/RunPrinter.h"
#include "cli/Summary.h"
#include "common/Text.h"
#include "platform/Paths.h"
#include "supervisor/Supervisor.h"

namespace cli {

namespace {

void Say(const Screen& screen, const std::string& text) { *screen.messages << text << std::flush; }

/// Everything that ends up on standard error about how it went; the exit code.
int Conclude(const RunResult& result, CRunPrinter& printer, const CArguments& arguments, const Screen& screen,
             const SummaryFacts& facts)
{
    printer.Finish();
    if (!result.message.empty()) Say(screen, "ferrule: " + PrintableLines(result.message) + "\n");
    if (!arguments.Has("--quiet")) Say(screen, SummaryText(result, printer, facts));
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

/// A record that the supervisor does not write itself.
void OpenRecord(std::ofstream& stream, const std::string& path, PrintOptions& options)
{
    if (path.empty() || path == "-") return;
    stream.open(path, std::ios::binary | std::ios::trunc);
    if (!stream) FailStart(path + ": the record cannot be written");
    options.record = &stream;
}

void CloseRecord(std::ofstream& stream, RunResult& result, const std::string& path)
{
    if (!stream.is_open()) return;
    stream.close();
    if (stream) {
        result.recordPath = path;
        return;
    }
    result.message += (result.message.empty() ? "" : "; ") + path + ": the record could not be written";
    result.exit = ExitClass::Broken;
}

int RunOfShard(const CArguments& arguments, const Screen& screen)
{
    const ShardOptions options = ReadShard(arguments);
    const std::string record = OptionalPath(arguments, "--record");
    PrintOptions print{.quiet = arguments.Has("--quiet"),
                       .dryRun = false,
                       .recordToData = record == "-",
                       .jobs = options.engine.jobs,
                       .part = options.shards > 1 ? arguments.Text("--shard") : "",
                       .record = nullptr};
    std::ofstream stream;
    OpenRecord(stream, record, print);
    CRunPrinter printer(screen, print);
    RunResult result = RunShard(options, printer);
    CloseRecord(stream, result, record);
    return Conclude(result, printer, arguments, screen,
                    {.dryRun = false, .canResume = false, .kept = options.journalPath});
}

int RunOfSequence(const CArguments& arguments, const Screen& screen)
{
    RunOptions options = ReadRun(arguments);
    const std::string record = OptionalPath(arguments, "--record");
    PrintOptions print{.quiet = arguments.Has("--quiet"),
                       .dryRun = options.dryRun,
                       .recordToData = record == "-",
                       .jobs = options.engine.jobs,
                       .record = nullptr};
    SayExtensions(arguments, screen);
    std::ofstream stream;
    if (options.dryRun)
        OpenRecord(stream, record, print);
    else if (record != "-")
        options.recordPath = record;
    CRunPrinter printer(screen, print);
    RunResult result = RunPlanned(options, printer);
    CloseRecord(stream, result, record);
    return Conclude(result, printer, arguments, screen,
                    {.dryRun = options.dryRun, .canResume = true, .kept = result.recordPath});
}

}  // namespace

int RunCommand(const CArguments& arguments, const Screen& screen)
{
    RefuseTwoKindsOfData(arguments);
    return arguments.Has("--manifest") ? RunOfShard(arguments, screen) : RunOfSequence(arguments, screen);
}

int PlanCommand(const CArguments& arguments, const Screen& screen)
{
    PlanOptions options;
    options.request = ReadRequest(arguments);
    options.engine = ReadEngine(arguments);
    options.manifestPath = OptionalPath(arguments, "--manifest");
    SayExtensions(arguments, screen);
    const bool quiet = arguments.Has("--quiet");
    CRunPrinter printer(
        screen, {.quiet = true, .dryRun = false, .recordToData = false, .jobs = 1, .part = "", .record = nullptr});
    const RunResult result = PlanRun(options, printer);
    if (!result.message.empty()) Say(screen, "ferrule: " + PrintableLines(result.message) + "\n");
    if (result.exit != ExitClass::Fine) return static_cast<int>(result.exit);
    if (!quiet) {
        Say(screen, PlanSentence(result.plan) + "\n");
        if (result.plan.oneWorker) Say(screen, "One part and one worker only: " + result.plan.oneWorkerReason + "\n");
        Say(screen, "Plan: " + options.manifestPath + "\n");
    }
    if (arguments.Has("--json")) *screen.data << result.plan.json << '\n';
    return kExitFine;
}

int MergeCommand(const CArguments& arguments, const Screen& screen)
{
    RefuseTwoKindsOfData(arguments);
    MergeOptions options;
    options.manifestPath = OptionalPath(arguments, "--manifest");
    for (const std::string& journal : arguments.Operands())
        options.journalPaths.push_back(platform::AbsolutePath(journal));
    const std::string record = OptionalPath(arguments, "--record");
    if (record != "-") options.recordPath = record;
    options.logPath = OptionalPath(arguments, "--log");
    CRunPrinter printer(screen, {.quiet = arguments.Has("--quiet"),
                                 .dryRun = false,
                                 .recordToData = record == "-",
                                 .jobs = 1,
                                 .record = nullptr});
    const RunResult result = MergeShards(options, printer);
    return Conclude(result, printer, arguments, screen,
                    {.dryRun = false, .canResume = false, .kept = result.recordPath});
}

}  // namespace cli
