// Decides, once the host has started, whether an unattended run will happen.
#pragma once

#include <string>

#include "protocol/RunDescription.h"

class CLogWriter;

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
