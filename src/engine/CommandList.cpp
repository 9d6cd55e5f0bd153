#include "engine/CommandList.h"

#include <utility>

#include "common/Log.h"
#include "common/Progress.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/HostFrame.h"
#include "sequence/HostSteps.h"
#include "sequence/Sequence.h"
#include "sequence/StepDescription.h"

namespace {

/// The lines of a command's description. One that cannot be had is nothing that keeps a command from its work.
std::vector<std::string> Description(const CHostCommand& command)
{
    std::vector<std::string> lines;
    const auto error = CatchHostError([&] {
        const CCab props = command.Props({kAVCommandKeyParamsDesc});
        const CCabView description = props.Cab(kAVCommandKeyParamsDesc);
        for (const std::string& key : description.Keys())
            lines.push_back(description.StringOrText(key.c_str()).value_or(""));
    });
    return error ? std::vector<std::string>() : lines;
}

void LogDescription(const CHostCommand& command, CLogWriter& log)
{
    const auto lines = Description(command);
    log.Line(lines.empty() ? "Command does not support parameter descriptions" : "Command's parameters description:");
    for (const std::string& line : lines) log.Line("\t" + line);
}

/// Hands the command one of its cabs. Answers why it does not take it; empty when it does.
template <class Setter>
std::string Refusal(Setter set)
{
    AVCommandStatus status = kAVCommandReady;
    if (const auto error = CatchHostError([&] { status = set(); })) return error->text;
    return status == kAVCommandInError ? "it answers with an error" : "";
}

/// Answers why the command cannot be used; empty when it can.
std::string SetUp(CHostCommand& command, const StepEntry& entry, CLogWriter& log)
{
    if (const CCabView config = entry.configuration) {
        if (const std::string reason = Refusal([&] { return command.SetConfig(config); }); !reason.empty()) {
            log.NameValue("ERROR: Setting command configuration failed", reason, 1);
            return "its configuration was refused (" + reason + ")";
        }
    }
    if (const CCabView params = entry.parameters) {
        log.NameNumber("Params cab entries", params.Size(), 1);
        if (const std::string reason = Refusal([&] { return command.SetParams(params); }); !reason.empty()) {
            log.NameValue("ERROR: Setting parameters failed", reason, 1);
            return "its parameters were refused (" + reason + ")";
        }
    }
    command.SetUIPolicy(static_cast<AVCommandUIPolicy>(entry.uiPolicy));
    LogDescription(command, log);
    return {};
}

/// The name under which the host has the handler, which may be a newer one; nothing when it has none. Logs what is
/// not there.
std::optional<std::string> FindHandler(const std::string& name, CLogWriter& log)
{
    if (FindCommandHandler(name)) return name;
    log.NameValue("Batch command does not exists", name, 1);  // sic
    if (const auto alternative = AlternativeHandler(name))
        log.NameValue("Trying to load alternative command", *alternative, 1);
    auto handler = AvailableHandler(name);
    if (!handler) log.Line("\tCommand handler is not available");
    return handler;
}

Expected<SequenceCommand> MakeCommand(const StepEntry& entry, bool trialRun, CLogWriter& log)
{
    const auto& name = entry.handler;
    if (!name || name->empty()) {
        log.Line("Error reading batch command from a cab");
        return Failure("A command of the sequence has no handler name.");
    }
    SequenceCommand made{.handlerName = *name,
                         .title = entry.title.value_or(*name),
                         .command = std::nullopt,
                         .protects = DescribeStep(*name).protects,
                         .saves = DescribeStep(*name).saves};
    const auto handler = FindHandler(*name, log);
    if (!handler) return made;
    made.handlerName = *handler;
    made.saves = DescribeStep(*handler).saves;
    made.leftOut = trialRun && !MayBeTried(DescribeStep(*handler));
    if (made.leftOut) return made;
    const auto error = CatchHostError([&] { made.command = CHostCommand::Create(*handler); });
    if (!made.command) {
        const std::string which = *handler + (error ? " (" + error->text + ")" : "");
        log.NameValue("Error creating a batch command", which, 1);
        return Failure("The command " + which + " cannot be created.");
    }
    const std::string problem = SetUp(*made.command, entry, log);
    if (!problem.empty()) return Failure("The command " + *handler + " cannot be used: " + problem + ".");
    return made;
}

}  // namespace

Expected<CommandList> MakeCommands(CCabView commands, bool trialRun, CLogWriter& log)
{
    const int count = commands.Size();
    log.NameNumber("Number of batch commands in the sequence", count, 1);
    CommandList list;
    for (int index = 0; index < count; ++index) {
        auto command = MakeCommand(StepEntry::Read(commands.Cab(CabKey(index).c_str())), trialRun, log);
        if (!command) return Failure(command.Error());
        list.push_back(std::move(*command));
    }
    return list;
}

namespace {

/// The texts of one round of callbacks. `onException` may be null: then the error text stands for it.
struct FlightTexts {
    const char* start;
    const char* completed;
    const char* onError;
    const char* noCallback;
    const char* onException;
};

constexpr FlightTexts kSequencePreflight = {"Preflighting the sequence", "Preflighting the sequence is completed",
                                            "Preflighting the sequence returned an error",
                                            "No Sequence preflighting callback",
                                            "Preflighting the sequence returned an error"};
constexpr FlightTexts kSequencePostflight = {
    "Postflighting the sequence", nullptr, "Postflighting the sequence returned an error",
    "No sequence postflighting callback", "Exception during command postflight"};
constexpr FlightTexts kFilePreflight = {
    "Preflighting input file", nullptr, "Preflighting input file returned an error",
    "No Preflighting callback for input file", "Preflighting input file returned an error"};
constexpr FlightTexts kFilePostflight = {
    "Postflighting input file", nullptr, "Postflighting input file returned an error",
    "No Postflighting callback for input file", "Exception occuring during file postflight"};  // sic

bool IsError(AVCommandStatus status) { return status == kAVCommandInError || status == kAVCommandCanceled; }

std::string Sentence(const char* text, const SequenceCommand& command, const std::string& detail)
{
    return std::string(text) + ": " + command.handlerName + (detail.empty() ? "" : " (" + detail + ")");
}

/// Runs one callback and logs how it went; answers the problem.
template <class Callback>
std::string Fly(const FlightTexts& texts, SequenceCommand& command, Callback callback, CLogWriter& log)
{
    std::optional<AVCommandStatus> status;
    if (const auto error = CatchHostError([&] { status = callback(*command.command); })) {
        log.NameValue(texts.start, command.handlerName, 1);
        log.NameValue(texts.onException, error->text, 1);
        return Sentence(texts.onException, command, error->text);
    }
    if (!status) {
        log.NameValue(texts.noCallback, command.handlerName, 1);
        return {};
    }
    log.NameValue(texts.start, command.handlerName, 1);
    if (IsError(*status)) {
        log.NameValue(texts.onError, command.handlerName, 1);
        return Sentence(texts.onError, command, command.command->LastError());
    }
    if (texts.completed) log.NameValue(texts.completed, command.handlerName, 1);
    return {};
}

/// `missing` is called for a command without a handler.
template <class Missing, class Work>
std::string ForEachAvailable(CommandList& commands, Missing missing, Work work)
{
    std::string firstProblem;
    for (SequenceCommand& command : commands) {
        if (command.leftOut) continue;
        if (!command.command) {
            missing(command);
            continue;
        }
        const std::string problem = work(command);
        if (firstProblem.empty()) firstProblem = problem;
    }
    return firstProblem;
}

constexpr auto kSilently = [](const SequenceCommand&) {};

/// Said for each file, not for the sequence.
auto SayMissing(CLogWriter& log)
{
    return
        [&log](const SequenceCommand& command) { log.NameValue("No command handler found", command.handlerName, 1); };
}

/// Brings a command to the file: ready, with the document as its input. Answers the problem.
std::string Assign(SequenceCommand& command, CCabView inputs, CLogWriter& log)
{
    bool assigned = false;
    const auto error = CatchHostError([&] {
        const AVCommandStatus status = command.command->Status();
        if (status != kAVCommandReady) {
            log.Line("Command is not ready before execution and is going to be reset. Current state: " +
                     std::to_string(status));
            command.command->Reset();
        }
        assigned = command.command->SetInputs(inputs) != kAVCommandInError;
    });
    if (assigned) return {};
    log.NameValue("ERROR: Cannot assign input file to a command handler", error ? error->text : command.handlerName,
                  1);
    return Sentence("ERROR: Cannot assign input file to a command handler", command, error ? error->text : "");
}

}  // namespace

std::string PreflightSequence(CommandList& commands, CLogWriter& log)
{
    return ForEachAvailable(commands, kSilently, [&](SequenceCommand& command) {
        return Fly(
            kSequencePreflight, command, [](CHostCommand& c) { return c.PreflightSequence(); }, log);
    });
}

std::string PostflightSequence(CommandList& commands, CLogWriter& log)
{
    return ForEachAvailable(commands, kSilently, [&](SequenceCommand& command) {
        return Fly(
            kSequencePostflight, command, [](CHostCommand& c) { return c.PostflightSequence(); }, log);
    });
}

std::string PreflightFile(CommandList& commands, PDDoc document, CCabView inputs, CLogWriter& log)
{
    return ForEachAvailable(commands, SayMissing(log), [&](SequenceCommand& command) {
        std::string problem = Assign(command, inputs, log);
        if (!problem.empty()) return problem;
        return Fly(
            kFilePreflight, command, [&](CHostCommand& c) { return c.PreflightFile(document); }, log);
    });
}

std::string PostflightFile(CommandList& commands, PDDoc document, CLogWriter& log)
{
    return ForEachAvailable(commands, SayMissing(log), [&](SequenceCommand& command) {
        return Fly(
            kFilePostflight, command, [&](CHostCommand& c) { return c.PostflightFile(document); }, log);
    });
}

namespace {

void MakeReady(CHostCommand& command, CLogWriter& log)
{
    if (command.Status() == kAVCommandReady) return;
    log.Line("\tWARNING: Command is not ready.");
    command.Reset();
    log.Line("\tWARNING: Command is RESET.");
}

void ShowDialogIfWanted(CHostCommand& command, bool interactive, CLogWriter& log)
{
    const bool canShow = command.Props({kAVCommandKeyCanShowDialog}).Bool(kAVCommandKeyCanShowDialog, false);
    if (!canShow || !interactive) return;
    log.Line("\tCommand's settings dialog is displayed.");
    command.ShowDialog();
}

AVCommandStatus WorkToTheEnd(CHostCommand& command, CProgressMonitorWrapper& progress)
{
    AVCommandStatus status = command.Work();
    while (status == kAVCommandWorking) {
        if (progress.IsCancelled()) {
            status = command.Cancel();
            return status == kAVCommandWorking ? AVCommandStatus{kAVCommandCanceled} : status;
        }
        status = command.Work();
    }
    return status;
}

AVCommandStatus Execute(CHostCommand& command, bool interactive, CProgressMonitorWrapper& progress, CLogWriter& log)
{
    MakeReady(command, log);
    ShowDialogIfWanted(command, interactive, log);
    AVCommandStatus status = command.Status();
    if (status != kAVCommandCanceled) status = WorkToTheEnd(command, progress);  // a dismissed dialog cancels
    if (status == kAVCommandCanceled) log.Line("Processing has been canceled");
    if (status == kAVCommandInError) command.Cancel();
    return status;
}

}  // namespace

ExecutionOutcome ExecuteCommand(CHostCommand& command, bool interactive, CProgressMonitorWrapper& progress,
                                CLogWriter& log)
{
    ExecutionOutcome outcome;
    log.NameTime("Command starting time", 1);
    outcome.raised = CatchHostError([&] { outcome.status = Execute(command, interactive, progress, log); });
    if (outcome.raised)
        log.NameValue("Exeption occured in ExecuteCommand() function", outcome.raised->text, 1);  // sic
    log.NameTime("Command ending time", 1);
    return outcome;
}
