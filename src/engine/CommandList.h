// The commands of a sequence, made for one input file.
#pragma once

#include "common/Expected.h"
#include "hostcalls/Cab.h"
#include "hostcalls/Commands.h"

#include <optional>
#include <string>
#include <vector>

class CLogWriter;

struct SequenceCommand {
    std::string handlerName;  // the one under which it was made, or that of the sequence when it was not
    std::string title;
    std::optional<CHostCommand> command;  // nothing when its handler is not available
};

using CommandList = std::vector<SequenceCommand>;

/// Makes the commands of a sequence, in order, with their configuration and parameters. A command without a handler
/// keeps an empty place; one that cannot be made or does not take its parameters fails the whole list, because
/// running it without them would not be what the sequence says. Throws CHostException.
[[nodiscard]] Expected<CommandList> MakeCommands(CCabView commands, CLogWriter& log);
