// The callbacks of handlers around a sequence and around each of its files.
#pragma once

#include "engine/CommandList.h"

#include <string>

class CLogWriter;

// Each asks all commands, in order, also after one of them reported an error. Each answers what the first problem
// was, empty when there was none, and turns a raise of a callback into such a problem.

[[nodiscard]] std::string PreflightSequence(CommandList& commands, CLogWriter& log);
std::string PostflightSequence(CommandList& commands, CLogWriter& log);

/// `inputs` tells each command its document; see CommandInputs.
[[nodiscard]] std::string PreflightFile(CommandList& commands, PDDoc document, CCabView inputs, CLogWriter& log);
[[nodiscard]] std::string PostflightFile(CommandList& commands, PDDoc document, CLogWriter& log);
