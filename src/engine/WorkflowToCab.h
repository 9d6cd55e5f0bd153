// Turns a workflow into a sequence of the shape that the host's own form has.
#pragma once

#include "engine/WorkflowModel.h"
#include "hostcalls/Cab.h"

/// Input kind and paths come from the sources (none: the user is asked); the commands are silent; the output is left
/// to the sequence's own save step. Throws CHostException.
[[nodiscard]] CCab CabFromWorkflow(const Workflow& workflow);

/// The same without the commands, and one command by itself: a long sequence looked at step by step needs no more.
/// Both throw CHostException.
[[nodiscard]] CCab CabWithoutCommands(const Workflow& workflow);
[[nodiscard]] CCab CabFromCommand(const WorkflowCommand& command);
