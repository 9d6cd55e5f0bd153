// The plug-in as a whole: what the host's life-cycle callbacks do.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "commands/CommandRegistry.h"
#include "common/Log.h"
#include "host/AppSettings.h"
#include "host/ToolMenu.h"
#include "host/UnattendedRun.h"
#include "ui/WindowsLibrary.h"

/// Owns everything that lives as long as the plug-in is loaded. One object, made once the host's tables are there.
///
/// Order: ImportAndRegister, Initialize, Unload, each at most once. All but the destructor call the host and may
/// throw CHostException; the destructor closes a log that is still open.
class CFerruleApp {
public:
    /// `moduleFile` is the path of the plug-in itself. The window is borrowed and may be null.
    CFerruleApp(const std::string& moduleFile, platform::WindowHandle hostWindow);
    CFerruleApp(const CFerruleApp&) = delete;
    CFerruleApp& operator=(const CFerruleApp&) = delete;
    ~CFerruleApp();

    /// Asks to be told when the host has started, and fetches the tables that need not be there.
    void ImportAndRegister();

    /// Builds the menus, reads the settings, opens the log and offers the batch steps to the host.
    void Initialize();

    /// Takes back the batch steps, saves the settings and closes the log.
    void Unload();

private:
    void OpenLog();
    /// The window for ours to belong to; null when the host has none.
    [[nodiscard]] void* HostWindow() const;
    [[nodiscard]] Expected<DialogServices> Dialogs();
    [[nodiscard]] std::unique_ptr<CProgressWindow> ProgressWindow();

    AppPaths m_paths;
    platform::WindowHandle m_hostWindow;
    CNumberedLog m_log;
    std::optional<AppSettings> m_settings;  // none until they have been read
    CWindowsLibrary m_windows;
    ToolServices m_tools;
    CHostClosing m_hostClosing;
    CCommandRegistry m_commands;
    CUnattendedRun m_unattendedRun;
};
