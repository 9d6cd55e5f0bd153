// Typed options made from what somebody typed. Throws CCommandError when something does not fit together or is
// missing.
#pragma once

#include <string>

#include "cli/Arguments.h"
#include "supervisor/RunOptions.h"

namespace cli {

/// The value of an option as absolute path; empty stays empty, and "-" stays "-".
std::string OptionalPath(const CArguments& arguments, const char* option);

/// The same for what has to be a file.
std::string FilePath(const CArguments& arguments, const char* option);

/// The host program, the plug-ins and, where the command has such options, the limits of the workers.
EngineOptions ReadEngine(const CArguments& arguments);

/// What "run" and "plan" are to do with which files.
RunDescription ReadRequest(const CArguments& arguments);

/// Options of "run" without a manifest, all but those that say how to report.
RunOptions ReadRun(const CArguments& arguments);
/// Options of "run" with a manifest.
ShardOptions ReadShard(const CArguments& arguments);

}  // namespace cli
