// The settings of an unattended run, from the environment or from a description.
#pragma once

#include <functional>
#include <string>

#include "engine/Work.h"
#include "protocol/RunDescription.h"

class CLogWriter;

/// Answers the value of an environment variable, empty when it is absent.
using EnvironmentReader = std::function<std::string(const char* name)>;

/// Narrow code page texts. Nothing is checked against the disk.
struct RunSettings {
    WorkDescription work;
    FinalAction finalAction = FinalAction::Nothing;
    std::string destination;
    bool executeInSteps = false;  // logged, without effect on the processing
    ExecutorSettings execution;
};

/// Reads all nine variables, logs each of them, and answers the settings, cleaned as each variable demands.
[[nodiscard]] RunSettings ReadRunSettings(const EnvironmentReader& environment, CLogWriter& log);

/// The settings of a run that somebody has described, logged in the same lines. In such a run results go into the
/// output folder or nowhere, and what could not be done completely costs no input.
[[nodiscard]] RunSettings DescribedSettings(const RunDescription& description, bool trialRun, CLogWriter& log);

/// Removes one pair of surrounding double quotes and the white space around and inside them; quotes inside stay.
[[nodiscard]] std::string CleanPath(const std::string& value);
