#pragma once

#include <map>
#include <string>

#include "commands/SecuritySettings.h"
#include "common/ProductPaths.h"

// Where the plug-in finds and keeps its files.

struct AppPaths : ProductPaths {
    std::string modulePath;  // of the plug-in itself, upper-cased
    std::string helpFile;
    std::string helpFolder;  // with the pages of the help, with its trailing separator
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
    SecuritySettings passwordTool;              // last settings of the tool that protects many documents
    std::map<std::string, int> metadataWidths;  // of columns by their names, in characters
};

/// The defaults when there is no settings file or it cannot be read.
[[nodiscard]] AppSettings LoadAppSettings(const std::string& path);

/// Puts the settings into the file, keeping all its other keys. A file that is not ours, of a newer version or not
/// readable is left as it is. False when nothing was saved; the log says why.
bool SaveAppSettings(const std::string& path, const AppSettings& settings, CLogWriter& log);
