// Where the product keeps its files for each user, whichever of its programs asks.
#pragma once

#include <string>

struct ProductPaths {
    std::string settingsFolder;  // with its trailing separator
    std::string settingsFile;
    std::string searchSettingsFile;
    std::string logFile;
};

/// Touches no file. Without a folder for application data the settings folder stands at the root.
[[nodiscard]] ProductPaths MakeProductPaths(const std::string& applicationDataFolder);
