// The commands about sequence files. The work is done by jobs; see jobs/SequenceJobs.h for their fields.
#pragma once

#include <string>

#include "cli/Arguments.h"
#include "cli/Console.h"
#include "protocol/JsonType.h"

namespace cli {

int SequenceShowCommand(const CArguments& arguments, const Screen& screen);
int SequenceCheckCommand(const CArguments& arguments, const Screen& screen);
int SequenceNewCommand(const CArguments& arguments, const Screen& screen);
int SequenceConvertCommand(const CArguments& arguments, const Screen& screen);

/// The job that writes a new sequence; reads the password files.
Json NewSequenceJob(const CArguments& arguments);

/// Answers as texts for people.
std::string SequenceText(const Json& sequence);
std::string FindingText(const std::string& path, const Json& finding);

}  // namespace cli
