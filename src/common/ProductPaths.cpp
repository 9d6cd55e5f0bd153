#include "common/ProductPaths.h"

#include "base/Names.h"

namespace {

constexpr const char* kVendorAndProduct[] = {"Quillon", "Ferrule"};

}  // namespace

std::string MakeTextCacheFolder(const std::string& userCacheFolder)
{
    if (userCacheFolder.empty()) return {};
    std::string folder = userCacheFolder + kSeparator;
    for (const char* name : kVendorAndProduct) folder += std::string(name) + kSeparator;
    return folder + "Text";
}

ProductPaths MakeProductPaths(const std::string& applicationDataFolder)
{
    ProductPaths paths;
    paths.settingsFolder = applicationDataFolder + kSeparator;
    for (const char* name : kVendorAndProduct) paths.settingsFolder += std::string(name) + kSeparator;
    paths.settingsFile = paths.settingsFolder + "Ferrule.cfs";
    paths.searchSettingsFile = paths.settingsFolder + "FerruleSearchSettings.cfs";
    paths.renameSettingsFile = paths.settingsFolder + "AutoRenameFiles.cfg";
    paths.logFile = paths.settingsFolder + "FerruleLog.txt";
    return paths;
}
