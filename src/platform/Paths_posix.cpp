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
