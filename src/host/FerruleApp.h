// The plug-in as a whole: what the host's life-cycle callbacks do, where it keeps its files, and what it remembers
// from one host run to the next.
#pragma once

#include <optional>
#include <string>

#include "commands/CommandRegistry.h"
#include "commands/SecuritySettings.h"
#include "common/Log.h"
#include "common/ProductPaths.h"
#include "host/UnattendedRun.h"

// Where the plug-in finds and keeps its files.

struct AppPaths : ProductPaths {
    std::string modulePath;  // of the plug-in itself, upper-cased
    std::string helpFile;
    bool logFileEnabled = false;
};

/// Touches no file. `moduleFile` is cut to 255 bytes; without a folder for application data the settings folder
/// stands at the root.
[[nodiscard]] AppPaths MakeAppPaths(const std::string& moduleFile, const std::string& applicationDataFolder);

/// Creates the settings folder when it is missing. Fails silently: the log and the settings say so when they open
/// their files.
void CreateSettingsFolder(const AppPaths& paths);

// What the plug-in remembers from one host run to the next.

class CLogWriter;

struct AppSettings {
    bool allowLogging = true;
    SecuritySettings passwordTool;  // last settings of the tool that protects many documents
};

/// The defaults when there is no settings file or it cannot be read.
[[nodiscard]] AppSettings LoadAppSettings(const std::string& path);

/// Puts the settings into the file, keeping all its other keys. A file that is not ours, of a newer version or not
/// readable is left as it is. False when nothing was saved; the log says why.
bool SaveAppSettings(const std::string& path, const AppSettings& settings, CLogWriter& log);

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

    AppPaths m_paths;
    CNumberedLog m_log;
    std::optional<AppSettings> m_settings;  // none until they have been read
    CHostClosing m_hostClosing;
    CCommandRegistry m_commands;
    CUnattendedRun m_unattendedRun;
};
