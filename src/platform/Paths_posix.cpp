#include "platform/Paths.h"

#include <dlfcn.h>
#include <link.h>

#include <filesystem>
#include <system_error>

namespace platform {

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
