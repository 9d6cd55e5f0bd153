// Typed options made from what somebody typed. Throws CCommandError when something does not fit together or is
// missing.
#pragma once

#include <string>
#include <vector>

#include "cli/Arguments.h"
#include "protocol/FinalAction.h"
#include "supervisor/RunOptions.h"

namespace cli {

/// The value of an option as absolute path; empty stays empty, and "-" stays "-".
std::string OptionalPath(const CArguments& arguments, const char* option);

/// The same for what has to be a file.
std::string FilePath(const CArguments& arguments, const char* option);

/// The path as it can be passed on to a run. Fails for a name that cannot.
std::string KeptAsItIs(const std::string& path);

/// An absolute path, looked for already, so that nothing is started for one that was mistyped.
std::string ExistingPath(const std::string& typed);

/// The folder of the user's text cache. Fails: empty, when the user has no folder for such.
std::string UserTextCache();
/// The folder in which words of documents are kept; empty with --no-cache.
std::string ReadTextCache(const CArguments& arguments);

/// --destination as the action takes it: a folder and a program's path are absolute.
std::string ReadDestination(const CArguments& arguments, const FinalActionFacts& action);

/// The host program, the plug-ins and, where the command has such options, the limits of the workers.
EngineOptions ReadEngine(const CArguments& arguments);

/// The work of "run" and "plan": the sequence that is the first operand, as typed.
WorkDescription ReadSequenceWork(const CArguments& arguments);
/// What is to be done with which files, for every command that does work on files. The files of the work are looked
/// for.
RunDescription ReadRequest(const CArguments& arguments, WorkDescription work);

/// The files and folders that are operands, and those of the list of --files-from. Fails: there are none to `verb`.
std::vector<std::string> ReadInputs(const CArguments& arguments, const std::string& verb);

/// Where results go must be said, by one of --output and --in-place: nobody is to lose inputs, or to miss results, by
/// what he did not type. `results`: what they are, "protected documents".
void RequirePlace(const CArguments& arguments, const std::string& results);

/// The same for work whose inputs are known, without what only sequences have: where results go, what is kept of the
/// inputs, and which of them are taken.
RunDescription ReadPlaces(const CArguments& arguments, WorkDescription work, std::vector<std::string> inputs);

/// Of these only where results go and what is kept of the inputs, for work that takes its inputs from a list.
RunDescription ReadResultPlaces(const CArguments& arguments, WorkDescription work, std::vector<std::string> inputs);

/// The options of a whole run, all but those that say how to report.
RunOptions ReadRun(const CArguments& arguments, RunDescription request);
/// Options of "run" with a manifest.
ShardOptions ReadShard(const CArguments& arguments);

}  // namespace cli
