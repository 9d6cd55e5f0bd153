// Lets a host collect the files of a run and writes the manifest.
#pragma once

#include <string>

#include "base/Expected.h"
#include "supervisor/RunObserver.h"
#include "supervisor/RunOptions.h"
#include "supervisor/Supervisor.h"
#include "supervisor/journal/Manifest.h"
#include "supervisor/results/OutputGuard.h"
#include "supervisor/workers/Worker.h"

/// When the plan could not read some folders, plans once more and adds what is new behind the files that the manifest
/// has: neither those nor results of the run count as new. Fails: the manifest stays as it is, with a warning.
void AddLeftOutFiles(const CWorkerStarter& starter, const RunDescription& request, const std::string& manifestPath,
                     const std::string& journalPath, int interruptsSeen, CRunObserver& observer);

struct Planned {
    PlanSummary summary = {};
    ManifestHeader header = {};
    std::vector<std::string> log = {};  ///< of the plug-in when planning failed
};

struct PlanFailure {
    ExitClass exit = ExitClass::Broken;
    std::string message = {};
};

/// Letters and digits that no other run has.
[[nodiscard]] std::string NewRunId();

class CPlanning {
public:
    /// Everything is borrowed.
    CPlanning(const CWorkerStarter& starter, const RunDescription& request, int interruptsSeen,
              CRunObserver& observer)
        : m_starter(starter), m_request(request), m_interruptsSeen(interruptsSeen), m_observer(observer)
    {
    }
    /// Borrowed: a plan with an input that the guard refuses fails.
    void GuardWith(const COutputGuard& guard) { m_guard = &guard; }
    /// `manifestPath`: appears complete or not at all; empty: none is written. False: Failure says why.
    [[nodiscard]] bool Run(const std::string& manifestPath, const std::string& run, bool dryRun, bool hashes = true);
    Planned& Result() { return m_planned; }
    const PlanFailure& Failure() const { return m_failure; }

private:
    bool Fail(ExitClass exit, std::string message);
    void OnReport(const Json& report, CManifestWriter* manifest);
    void OnInput(const Json& input, CManifestWriter* manifest);

    const CWorkerStarter& m_starter;
    const RunDescription& m_request;
    int m_interruptsSeen;
    CRunObserver& m_observer;
    const COutputGuard* m_guard = nullptr;
    std::string m_refusal;
    Planned m_planned;
    PlanFailure m_failure;
    int m_files = 0;
    bool m_disordered = false;  // a report that does not fit
};
