#include "host/AppPaths.h"

#include "common/Text.h"
#include "platform/Files.h"
#include "platform/Paths.h"

#include <cstddef>

namespace {

constexpr std::size_t kLongestModulePath = 255;
constexpr const char* kVendorAndProduct[] = {"Quillon", "Ferrule"};

}  // namespace

AppPaths MakeAppPaths(const std::string& moduleFile, const std::string& applicationDataFolder)
{
    AppPaths paths;
    paths.modulePath = ToUpperAscii(moduleFile.substr(0, kLongestModulePath));
    paths.helpFile = ReplaceAll(paths.modulePath, ".API", ".CHM");
    paths.settingsFolder = applicationDataFolder + platform::kSeparator;
    for (const char* name : kVendorAndProduct) paths.settingsFolder += std::string(name) + platform::kSeparator;
    paths.settingsFile = paths.settingsFolder + "Ferrule.cfs";
    paths.searchSettingsFile = paths.settingsFolder + "FerruleSearchSettings.cfs";
    paths.logFile = paths.settingsFolder + "FerruleLog.txt";
    paths.logFileEnabled = true;
    return paths;
}

void CreateSettingsFolder(const AppPaths& paths) { (void)platform::CreateFolders(paths.settingsFolder); }
