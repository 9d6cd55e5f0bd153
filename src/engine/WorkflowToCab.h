// Turns a workflow into a sequence of the shape that the host's own form has.
#pragma once

#include "engine/WorkflowModel.h"
#include "hostcalls/Cab.h"

/// Input kind and paths come from the sources (none: the user is asked); the commands are silent; the output is left
/// to the sequence's own save step. Throws CHostException.
[[nodiscard]] CCab CabFromWorkflow(const Workflow& workflow);
