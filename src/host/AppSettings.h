// What the plug-in remembers from one host run to the next.
#pragma once

#include "commands/SecuritySettings.h"

#include <string>

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
