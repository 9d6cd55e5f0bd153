// Carries out one unattended run from start to end.
#pragma once

#include "batchrun/HostCloser.h"
#include "batchrun/RunEvents.h"
#include "batchrun/RunSettings.h"
#include "engine/Executor.h"

#include <functional>

class CInputSource;
class CLogWriter;
class CSequence;

/// What is done with a loaded sequence.
using SequenceUse = std::function<ExecutionResult(const RunSettings& settings, const ExecutorSettings& executor,
                                                  CSequence& sequence)>;

/// What a run may do otherwise than one that is started from the environment.
struct RunVariation {
    /// Borrowed; hands out the input files. Null: they are collected.
    CInputSource* inputs = nullptr;
    /// An input whose file came out incomplete gets no final action, and after a failed step none is replaced.
    bool keepIncomplete = false;
    /// A document that has lost something to damage is dealt with like any other.
    bool acceptDamaged = false;
    /// Results go into the alternative output folder or nowhere.
    bool insistsOnOutputPath = false;
    /// Nothing is to be done for good.
    bool trialRun = false;
    std::vector<std::string> furtherInputPaths = {};
    /// In place of running the sequence.
    SequenceUse use = {};
};

/// The references are borrowed and must outlive the driver.
struct RunDriverServices {
    EnvironmentReader environment;
    CLogWriter& log;
    CRunEvents& events;
    CHostCloser& host;
    RunVariation variation = {};
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
    ExecutionResult RunFiles(const RunSettings& settings, CSequence& sequence, CProgressMonitorWrapper* monitor);
    std::string ApplyFinalActionTo(const ProcessedFile& file, const RunSettings& settings);
    std::string LeaveOutFinalAction(const char* because, const std::string& message);

    RunDriverServices m_services;
    bool m_started = false;
    bool m_executeInSteps = false;
};
