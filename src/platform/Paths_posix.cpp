#include "platform/Paths.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/Files.h"

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

}  // namespace platform
