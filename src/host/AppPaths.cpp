#include "host/AppPaths.h"

#include "base/Names.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "platform/Files.h"

#include <cstddef>

namespace {

constexpr std::size_t kLongestModulePath = 255;  // characters

/// Bytes that are no text count as characters.
std::string FirstCharacters(const std::string& text, std::size_t count)
{
    if (!IsValidUtf8(text)) return text.substr(0, count);
    std::size_t end = 0;
    for (; count > 0 && end < text.size(); --count) (void)NextUtf8(text, end);
    return text.substr(0, end);
}

}  // namespace

AppPaths MakeAppPaths(const std::string& moduleFile, const std::string& applicationDataFolder)
{
    AppPaths paths;
    static_cast<ProductPaths&>(paths) = MakeProductPaths(applicationDataFolder);
    paths.modulePath = UpperCasedName(FirstCharacters(moduleFile, kLongestModulePath));
    paths.helpFile = ReplaceAll(paths.modulePath, ".API", ".CHM");
    paths.logFileEnabled = true;
    return paths;
}

void CreateSettingsFolder(const AppPaths& paths) { (void)platform::CreateFolders(paths.settingsFolder); }
