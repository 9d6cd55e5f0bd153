// The settings of an unattended run, taken from the environment.
#pragma once

#include "protocol/FinalAction.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

class CLogWriter;

/// Answers the value of an environment variable, empty when it is absent.
using EnvironmentReader = std::function<std::string(const char* name)>;

/// Narrow code page texts. The members are cleaned as each variable demands; nothing is checked against the disk.
struct RunSettings {
    std::string sequencePath;           // quotes removed
    FinalAction finalAction = FinalAction::Nothing;
    std::string destination;            // as it stands
    std::string alternativeInputPath;   // empty = not set
    std::string alternativeOutputPath;  // empty = not set
    /// Without blanks and dots around them; nothing = what the sequence accepts, an empty list = none.
    std::optional<std::vector<std::string>> allowedExtensions;
    bool executeInSteps = false;  // logged, without effect on the processing
    bool showProgress = true;
    bool noSubfolders = false;
};

/// Reads all nine variables, logs each of them, and answers the cleaned settings.
[[nodiscard]] RunSettings ReadRunSettings(const EnvironmentReader& environment, CLogWriter& log);

/// Removes one pair of surrounding double quotes and the white space around and inside them; quotes inside stay.
[[nodiscard]] std::string CleanPath(const std::string& value);
