#include "host/AppPaths.h"

#include "common/Text.h"
#include "platform/Files.h"

#include <cstddef>

namespace {

constexpr std::size_t kLongestModulePath = 255;

}  // namespace

AppPaths MakeAppPaths(const std::string& moduleFile, const std::string& applicationDataFolder)
{
    AppPaths paths;
    static_cast<ProductPaths&>(paths) = MakeProductPaths(applicationDataFolder);
    paths.modulePath = ToUpperAscii(moduleFile.substr(0, kLongestModulePath));
    paths.helpFile = ReplaceAll(paths.modulePath, ".API", ".CHM");
    paths.logFileEnabled = true;
    return paths;
}

void CreateSettingsFolder(const AppPaths& paths) { (void)platform::CreateFolders(paths.settingsFolder); }
