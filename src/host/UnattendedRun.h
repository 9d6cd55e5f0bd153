#pragma once

#include <optional>
#include <string>

#include "batchrun/RunDriver.h"
#include "batchrun/RunEvents.h"
#include "batchrun/RunSettings.h"
#include "hostapi/HostTypes.h"
#include "jobs/JobHost.h"
#include "platform/HostWindow.h"

// Ends the host after an unattended run.

class CLogWriter;

/// Old hosts are closed through their main window, newer ones through their menu item "Quit".
class CHostClosing final : public CHostCloser {
public:
    /// The log is borrowed. The window may be null or gone: then an old host stays open.
    CHostClosing(platform::WindowHandle mainWindow, CLogWriter& log) : m_mainWindow(mainWindow), m_log(log) {}

    void CloseHost() override;

private:
    void CloseThroughWindow();
    void CloseThroughMenu();

    platform::WindowHandle m_mainWindow;
    CLogWriter& m_log;
};

// Connects the unattended run with the host: start-up notification, idle procedure, main window.

/// There is at most one; the host's callbacks find it from Register until it goes.
class CUnattendedRun final : private CStartupActions {
public:
    /// Log and host are borrowed. `progressWindow` answers null where there are no windows.
    CUnattendedRun(CLogWriter& log, CHostCloser& host, CCustomMonitor::WindowFactory progressWindow);
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
