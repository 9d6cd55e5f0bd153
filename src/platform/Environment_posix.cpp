#include "platform/Environment.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/Files.h"

namespace platform {
namespace {

std::string HomeFolder()
{
    std::string home = EnvironmentText("HOME");
    if (!home.empty()) return home;
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir ? user->pw_dir : std::string();
}

std::string ConfiguredFolder()
{
    std::string folder = EnvironmentText("XDG_CONFIG_HOME");
    if (folder.starts_with('/')) return folder;  // anything but an absolute path does not count
    const std::string home = HomeFolder();
    return home.empty() ? std::string() : home + "/.config";
}

}  // namespace

std::string EnvironmentText(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : std::string();
}

std::string ApplicationDataFolder()
{
    std::string folder = ConfiguredFolder();
    while (folder.ends_with('/')) folder.pop_back();
    if (folder.empty() || !CreateFolders(folder)) return {};
    return folder;
}

}  // namespace platform
