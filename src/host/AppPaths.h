// Where the plug-in finds and keeps its files.
#pragma once

#include "common/ProductPaths.h"

#include <string>

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
