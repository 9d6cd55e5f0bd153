// Drives one command until it is through.
#pragma once

#include <optional>

#include "hostcalls/Commands.h"
#include "hostcalls/HostFrame.h"

class CLogWriter;
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
