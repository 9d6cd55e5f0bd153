// From the shape of XML to that of the host's own form, and back.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hostcalls/Cab.h"
#include "sequence/Sequence.h"
#include "sequence/XmlForm.h"

/// The commands and sources of a sequence as XML states them; neighbours of one title make a group. What XML has no
/// place for is left out: whoever needs to know compares. Commands without a handler's name keep an empty one.
/// Throws CHostException.
[[nodiscard]] Workflow WorkflowFromSequence(const CSequence& sequence);

/// Where two cabs differ in keys, types or values: the keys from the top, joined by ":", in the order of a cab.
/// Values of types that only the host knows always differ. Throws CHostException.
[[nodiscard]] std::vector<std::string> CabDifferences(CCabView one, CCabView other);

/// Input kind and paths come from the sources (none: the user is asked); the commands are silent; the output is left
/// to the sequence's own save step. Throws CHostException.
[[nodiscard]] CSequence SequenceFromWorkflow(const Workflow& workflow);

/// The same without the commands, and one command by itself: a long sequence looked at step by step needs no more.
/// Both throw CHostException.
[[nodiscard]] CSequence SequenceWithoutCommands(const Workflow& workflow);
[[nodiscard]] CCab CabFromCommand(const WorkflowCommand& command);
