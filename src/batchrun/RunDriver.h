// Carries out one unattended run from start to end.
#pragma once

#include "batchrun/HostCloser.h"
#include "batchrun/RunEvents.h"
#include "batchrun/RunSettings.h"

#include <functional>
#include <memory>

class CLogWriter;
class CProgressMonitorWrapper;

/// Everything is borrowed and must outlive the driver.
struct RunDriverServices {
    EnvironmentReader environment;
    CLogWriter& log;
    CRunEvents& events;
    CHostCloser& host;
};

/// Order: Idle is called from the host's idle loop; its first call does the whole run, each later one returns at
/// once.
class CRunDriver {
public:
    explicit CRunDriver(RunDriverServices services);

    /// Never throws: a host error or any other exception ends the run, is logged, and leaves the host open.
    void Idle() noexcept;

    bool HasStarted() const { return m_started; }

    /// Set from the environment at the start of a run; kept for whoever asks, nothing depends on it.
    bool ExecuteInSteps() const { return m_executeInSteps; }

private:
    struct Ending {
        RunEnd end = RunEnd::Finished;
        std::string message;
    };

    Ending Run();
    Ending RunOrReport();
    Ending RunSequence(const RunSettings& settings, class CSequence& sequence);

    RunDriverServices m_services;
    bool m_started = false;
    bool m_executeInSteps = false;
};
