// Where the product keeps its files for each user, whichever of its programs asks.
#pragma once

#include <string>

struct ProductPaths {
    std::string settingsFolder;  // with its trailing separator
    std::string settingsFile;
    std::string searchSettingsFile;
    std::string renameSettingsFile;  // of the rename tool, as they were used last
    std::string logFile;
};

/// Where words of documents are kept, below the user's folder for caches; empty stays empty. Touches no file.
[[nodiscard]] std::string MakeTextCacheFolder(const std::string& userCacheFolder);

/// Touches no file. Without a folder for application data the settings folder stands at the root.
[[nodiscard]] ProductPaths MakeProductPaths(const std::string& applicationDataFolder);
