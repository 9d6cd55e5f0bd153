// Connects the unattended run with the host: start-up notification, idle procedure, main window.
#pragma once

#include "batchrun/RunDriver.h"
#include "batchrun/StartupReader.h"
#include "hostapi/HostTypes.h"
#include "jobs/JobReporter.h"

#include <optional>
#include <string>

class CLogWriter;

/// There is at most one; the host's callbacks find it from Register until it goes.
class CUnattendedRun final : private CStartupActions {
public:
    /// Both are borrowed.
    CUnattendedRun(CLogWriter& log, CHostCloser& host);
    CUnattendedRun(const CUnattendedRun&) = delete;
    CUnattendedRun& operator=(const CUnattendedRun&) = delete;
    ~CUnattendedRun() override;

    /// Asks the host to say when it has started; its job, or else the environment, is read then. May throw
    /// CHostException.
    void Register();

private:
    void HostHasStarted();
    void Idle();
    void DoJobOnce();
    void HideHostWindow() override;
    void KeepHostWindowOffScreen() override;
    void ScheduleRunDriver(int periodTicks) override;

    static void HOSTCALL OnHostStarted(void* clientData);
    static void HOSTCALL OnViewWillOpen(PDDoc document, void* clientData);
    static void HOSTCALL OnIdle(void* clientData);

    CLogWriter& m_log;
    CHostCloser& m_host;
    CJobReporter m_events;
    CRunDriver m_driver;
    StartupDecision m_startup;
    std::optional<std::string> m_job;  // the host's, in place of the environment
    bool m_jobBegun = false;
};
