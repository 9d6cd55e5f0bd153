#include "engine/CommandList.h"

#include "common/Log.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/HostFrame.h"
#include "sequence/HostSteps.h"
#include "sequence/Sequence.h"
#include "sequence/StepDescription.h"

#include <utility>

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
    const auto handler = AvailableHandler(name);
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
