#include "engine/CommandFlights.h"

#include "common/Log.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/HostFrame.h"

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
