// What happens to an input file after it has been processed.
#pragma once

#include <string>

#include "protocol/FinalAction.h"

class CLogWriter;

enum class FinalActionResult {
    Done,
    Failed,      // logged; the input file is where it was
    UnknownCode  // logged; nothing was done
};

struct FinalActionOutcome {
    FinalActionResult result = FinalActionResult::Done;
    std::string reason = {};  // why it failed: a sentence without its full stop, and the path that it is about
    std::string path = {};
};

/// What is to be done.
struct FinalActionRequest {
    FinalAction action = FinalAction::Nothing;
    std::string destination = {};  // a folder, a new name, or a program, as the action demands
    bool failIfExists = false;     // for Copy alone: do not replace an existing copy
};

/// Applies an action to an input file and logs the outcome.
///
/// Nothing but Copy and MoveReplace ever replaces a file, and no failure loses the input.
[[nodiscard]] FinalActionOutcome ApplyFinalAction(const std::string& inputPath, const FinalActionRequest& request,
                                                  CLogWriter& log);
