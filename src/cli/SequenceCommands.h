// The commands about sequence files. The work is done by jobs; see jobs/SequenceJobs.h for their fields.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

int SequenceShowCommand(const CArguments& arguments, const Screen& screen);
int SequenceCheckCommand(const CArguments& arguments, const Screen& screen);
int SequenceNewCommand(const CArguments& arguments, const Screen& screen);
int SequenceConvertCommand(const CArguments& arguments, const Screen& screen);

/// The job that writes a new sequence; reads the password files.
nlohmann::json NewSequenceJob(const CArguments& arguments);

/// Answers as texts for people.
std::string SequenceText(const nlohmann::json& sequence);
std::string FindingText(const std::string& path, const nlohmann::json& finding);

}  // namespace cli
