// Carries out one unattended run from start to end.
#pragma once

#include <functional>

#include "batchrun/RunEvents.h"
#include "batchrun/RunSettings.h"
#include "common/Progress.h"
#include "engine/Executor.h"

class CInputSource;
class CLogWriter;

/// What is done with loaded work.
using WorkUse = std::function<ExecutionResult(const RunSettings& settings, CWork& work)>;

/// The references are borrowed and must outlive the driver.
struct RunDriverServices {
    /// Answers the settings of the run and logs them.
    std::function<RunSettings()> settings;
    CLogWriter& log;
    CRunEvents& events;
    CHostCloser& host;
    /// Borrowed; hands out the input files. Null: they are collected.
    CInputSource* inputs = nullptr;
    /// Makes the window that shows the progress of a run that wants one; empty where there are no windows.
    CCustomMonitor::WindowFactory progressWindow = {};
    /// In place of doing the work.
    WorkUse use = {};
};

/// Order: Idle is called from the host's idle loop; its first call does the whole run, each later one returns at
/// once.
class CRunDriver {
public:
    explicit CRunDriver(RunDriverServices services);

    /// Throws nothing: a host error or any other exception ends the run, is logged, and leaves the host open.
    void Idle() noexcept;

    bool HasStarted() const { return m_started; }

    /// Set from the environment during a run; kept for whoever asks, nothing depends on it.
    bool ExecutesInSteps() const { return m_executeInSteps; }

private:
    struct Ending {
        RunEnd end = RunEnd::Finished;
        std::string message;
    };

    Ending RunGuarded() noexcept;
    Ending Run();
    Ending LoadAndRun(const RunSettings& settings);
    Ending RunLoaded(const RunSettings& settings, CWork& work);
    ExecutionResult RunFiles(const RunSettings& settings, CWork& work);
    std::string ApplyFinalActionTo(const ProcessedFile& file, const RunSettings& settings);
    std::string LeaveOutFinalAction(const char* because, const std::string& message);

    RunDriverServices m_services;
    bool m_started = false;
    bool m_executeInSteps = false;
};
