#include <filesystem>

#include "openhost/files/FilePaths.h"

namespace openhost {

const char* const kFileSysName = "Unix";

bool NamesFileSys(std::string_view name) { return name == kFileSysName; }

std::string AbsoluteNative(std::string_view native)
{
    std::string given(native);
    if (given.empty() || given[0] != '/') {
        std::error_code failed;
        given = std::filesystem::current_path(failed).native() + "/" + given;
    }
    std::string result;
    for (std::size_t at = 0; at < given.size();) {
        const std::size_t end = std::min(given.find('/', at), given.size());
        const std::string_view step = std::string_view(given).substr(at, end - at);
        if (!step.empty() && step != ".") result.append("/").append(step);
        at = end + 1;
    }
    return result.empty() ? "/" : result;
}

bool IsAbsoluteNative(std::string_view native) { return native.starts_with('/'); }

std::string FolderOfNative(std::string_view absolute)
{
    if (absolute == "/") return {};
    const std::size_t last = absolute.rfind('/');
    return last == 0 ? "/" : std::string(absolute.substr(0, last));
}

std::string NameOfNative(std::string_view absolute) { return std::string(absolute.substr(absolute.rfind('/') + 1)); }

std::string JoinNative(std::string_view folder, std::string_view name)
{
    std::string path(folder);
    if (!path.ends_with('/')) path += '/';
    return path.append(name);
}

bool IsPlainName(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos;
}

std::string DeviceIndependentOfNative(std::string_view absolute) { return std::string(absolute); }

std::string NativeOfDeviceIndependent(std::string_view absolute) { return AbsoluteNative(absolute); }

std::size_t StepsToRoot(std::string_view) { return 0; }

std::string UrlOfNative(std::string_view absolute) { return "file://" + PercentEncoded(absolute, "/-._~"); }

}  // namespace openhost
