// Carries out one unattended run from start to end.
#pragma once

#include "batchrun/HostCloser.h"
#include "batchrun/RunEvents.h"
#include "batchrun/RunSettings.h"

class CLogWriter;
class CSequence;

/// The references are borrowed and must outlive the driver.
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
    Ending RunLoaded(const RunSettings& settings, CSequence& sequence);
    std::string ApplyFinalActionTo(const std::string& inputPath, const RunSettings& settings);

    RunDriverServices m_services;
    bool m_started = false;
    bool m_executeInSteps = false;
};
