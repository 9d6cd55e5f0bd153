#include <dlfcn.h>
#include <link.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/Files.h"
#include "platform/Paths.h"

namespace platform {

std::string AbsolutePath(const std::string& path)
{
    const auto absolute = std::filesystem::absolute(path);
    if (std::find(absolute.begin(), absolute.end(), "..") != absolute.end()) {
        const std::string canonical = CanonicalPath(absolute);
        return canonical.empty() ? absolute.string() : canonical;
    }
    const auto normal = absolute.lexically_normal();
    const bool endsWithSeparator = !normal.has_filename() && normal.has_relative_path();
    return endsWithSeparator ? normal.parent_path() : normal;
}

std::string ModulePath(const void* codeInModule)
{
    Dl_info info;
    void* extra = nullptr;
    if (dladdr1(codeInModule, &info, &extra, RTLD_DL_LINKMAP) == 0 || !extra) return {};
    const std::string name = static_cast<const link_map*>(extra)->l_name;
    if (name.empty()) return ExecutablePath();  // the program itself has no name in the loader's list
    std::error_code error;
    const auto path = std::filesystem::absolute(name, error);
    return error ? std::string() : path.lexically_normal().string();
}

std::string ExecutablePath()
{
    std::error_code error;
    const auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : path.string();
}

namespace {

std::string HomeFolder()
{
    std::string home = EnvironmentText("HOME");
    if (!home.empty()) return home;
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir ? user->pw_dir : std::string();
}

/// What the variable says; else this folder of the home. Without a separator at its end.
std::string ConfiguredFolder(const char* variable, const char* usual)
{
    std::string folder = EnvironmentText(variable);
    if (!folder.starts_with('/')) {  // anything but an absolute path does not count
        const std::string home = HomeFolder();
        folder = home.empty() ? std::string() : home + usual;
    }
    while (folder.ends_with('/')) folder.pop_back();
    return folder;
}

}  // namespace

std::string EnvironmentText(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : std::string();
}

std::string UserCacheFolder() { return ConfiguredFolder("XDG_CACHE_HOME", "/.cache"); }

std::string ApplicationDataFolder()
{
    const std::string folder = ConfiguredFolder(kApplicationDataVariable, "/.config");
    if (folder.empty() || !CreateFolders(folder)) return {};
    return folder;
}

std::vector<std::string> UserFolders()
{
    std::vector<std::string> folders;
    for (std::string folder :
         {ConfiguredFolder(kApplicationDataVariable, "/.config"), ConfiguredFolder("XDG_DATA_HOME", "/.local/share")})
        if (!folder.empty()) folders.push_back(std::move(folder));
    return folders;
}

}  // namespace platform
