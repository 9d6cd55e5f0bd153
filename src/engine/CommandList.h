// The commands of a sequence, made for one input file: their callbacks around a sequence and its files, and their
// work.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "hostcalls/Cab.h"
#include "hostcalls/Commands.h"
#include "hostcalls/HostFrame.h"

// The commands of a sequence, made for one input file.

class CLogWriter;

struct SequenceCommand {
    std::string handlerName;  // the one under which it was made, or that of the sequence when it was not
    std::string title;
    std::optional<CHostCommand> command;  // nothing when its handler is not available, or is left out
    bool leftOut = false;                 // a trial run does not touch it
    bool protects = false;                // without it the document must not be saved
    bool saves = false;                   // it saves the document
};

using CommandList = std::vector<SequenceCommand>;

/// Makes the commands of a sequence, in order, with their configuration and parameters. A command without a handler
/// keeps an empty place; one that cannot be made or does not take its parameters fails the whole list, because
/// running it without them would not be what the sequence says. A trial run leaves out the commands that could do
/// something for good. Throws CHostException.
[[nodiscard]] Expected<CommandList> MakeCommands(CCabView commands, bool trialRun, CLogWriter& log);

// The callbacks of handlers around a sequence and around each of its files.

// Each asks all commands, in order, also after one of them reported an error. Each answers what the first problem
// was, empty when there was none, and turns a raise of a callback into such a problem.

[[nodiscard]] std::string PreflightSequence(CommandList& commands, CLogWriter& log);
std::string PostflightSequence(CommandList& commands, CLogWriter& log);

/// `inputs` tells each command its document; see CommandInputs.
[[nodiscard]] std::string PreflightFile(CommandList& commands, PDDoc document, CCabView inputs, CLogWriter& log);
[[nodiscard]] std::string PostflightFile(CommandList& commands, PDDoc document, CLogWriter& log);

// Drives one command until it is through.

class CProgressMonitorWrapper;

struct ExecutionOutcome {
    AVCommandStatus status = 0;
    std::optional<HostError> raised;  // the status means nothing when the host raised
};

/// Lets a command work as long as it says that it is working. Asks for cancel between two steps of work and then
/// cancels the command. `interactive`: a command that has a settings dialog shows it first. Throws nothing of the
/// host's.
[[nodiscard]] ExecutionOutcome ExecuteCommand(CHostCommand& command, bool interactive,
                                              CProgressMonitorWrapper& progress, CLogWriter& log);
