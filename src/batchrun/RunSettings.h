// The settings of an unattended run, from the environment or from a description, and whether such a run will happen.
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
    bool showProgress = false;    // where the host has windows
    ExecutorSettings execution;
};

/// Reads all nine variables, logs each of them, and answers the settings, cleaned as each variable demands.
[[nodiscard]] RunSettings ReadRunSettings(const EnvironmentReader& environment, CLogWriter& log);

/// The settings of a run that somebody has described, logged in the same lines. In such a run results go into the
/// output folder or nowhere, and what could not be done completely costs no input.
[[nodiscard]] RunSettings DescribedSettings(const RunDescription& description, bool trialRun, CLogWriter& log);

/// Removes one pair of surrounding double quotes and the white space around and inside them; quotes inside stay.
[[nodiscard]] std::string CleanPath(const std::string& value);

// Decides, once the host has started, whether an unattended run will happen.

/// What the start-up reader asks of the host side. Implemented above this folder.
class CStartupActions {
public:
    virtual ~CStartupActions() = default;

    /// Finds the host's main window, hides it, moves it off the screen and pumps what messages are pending.
    virtual void HideHostWindow() = 0;

    /// From now on moves the host's main window off the screen whenever notification 51 arrives.
    virtual void KeepHostWindowOffScreen() = 0;

    /// Registers the run driver as an idle procedure; the period is in host ticks of 1/60 second.
    virtual void ScheduleRunDriver(int periodTicks) = 0;
};

struct StartupDecision {
    bool runScheduled = false;
    bool hostWindowHidden = false;  // stays so until the host exits; nothing else depends on it
};

/// Call once, when the host says that it has started. May throw CHostException from the actions.
/// `noProgress`: the text that the user gave for it.
StartupDecision ReadStartup(const WorkDescription& work, const std::string& noProgress, CLogWriter& log,
                            CStartupActions& actions);
