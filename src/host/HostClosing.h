// Ends the host after an unattended run.
#pragma once

#include "batchrun/HostCloser.h"
#include "platform/HostWindow.h"

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
