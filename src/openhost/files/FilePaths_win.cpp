#include <algorithm>

#include "openhost/files/FilePaths.h"
#include "platform/WideText_win.h"

namespace openhost {

const char* const kFileSysName = "DOS";

bool NamesFileSys(std::string_view name) { return name == kFileSysName || name == "Win"; }

namespace {

bool IsLetter(char character) { return (character | 0x20) >= 'a' && (character | 0x20) <= 'z'; }

bool HasDrive(std::string_view path) { return path.size() >= 2 && IsLetter(path[0]) && path[1] == ':'; }

/// Up to and with the next separator from `at` on.
std::size_t PastName(std::string_view path, std::size_t at)
{
    const std::size_t end = path.find('\\', at);
    return end == std::string_view::npos ? path.size() : end + 1;
}

/// The length of what no name can be taken off: "C:\", "\\server\share\".
std::size_t RootLength(std::string_view absolute)
{
    if (HasDrive(absolute)) return std::min<std::size_t>(3, absolute.size());
    if (absolute.starts_with("\\\\?\\") || absolute.starts_with("\\\\.\\")) return PastName(absolute, 4);
    if (absolute.starts_with("\\\\")) return PastName(absolute, PastName(absolute, 2));
    return 0;
}

/// What the system's calls cannot name in any other way.
bool IsLeftAlone(std::string_view path)
{
    if (path.starts_with("\\\\.\\")) return true;
    return path.starts_with("\\\\?\\") && !HasDrive(path.substr(4)) && !path.substr(4).starts_with("UNC\\");
}

std::string Slashed(std::string_view path)
{
    std::string slashed(path);
    std::ranges::replace(slashed, '\\', '/');
    return slashed;
}

}  // namespace

std::string AbsoluteNative(std::string_view native)
{
    std::string given(native);
    std::ranges::replace(given, '/', '\\');
    if (IsLeftAlone(given)) return given;
    const std::wstring wide = platform::WidePath(given);
    if (wide.empty()) {  // no text; nothing can be opened by it, but it can be told
        return HasDrive(given) || given.starts_with('\\') ? given : JoinNative(AbsoluteNative("."), given);
    }
    std::string absolute = platform::NarrowPath(wide);
    while (absolute.size() > RootLength(absolute) && absolute.ends_with('\\')) absolute.pop_back();
    return absolute;
}

bool IsAbsoluteNative(std::string_view native)
{
    return native.starts_with("\\\\") ||
           (HasDrive(native) && native.size() > 2 && (native[2] == '\\' || native[2] == '/'));
}

std::string FolderOfNative(std::string_view absolute)
{
    const std::size_t root = RootLength(absolute);
    if (absolute.size() <= root) return {};
    const std::size_t last = absolute.rfind('\\');
    return std::string(absolute.substr(0, last == std::string_view::npos || last < root ? root : last));
}

std::string NameOfNative(std::string_view absolute)
{
    if (absolute.size() <= RootLength(absolute)) return {};
    return std::string(absolute.substr(absolute.rfind('\\') + 1));
}

std::string JoinNative(std::string_view folder, std::string_view name)
{
    std::string path(folder);
    if (!path.ends_with('\\')) path += '\\';
    return path.append(name);
}

bool IsPlainName(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && name.find_first_of("\\/:") == std::string_view::npos;
}

std::string DeviceIndependentOfNative(std::string_view absolute)
{
    std::string path = Slashed(absolute);
    if (HasDrive(absolute))
        path = std::string("/") + absolute[0] + path.substr(2);
    else if (path.starts_with("//"))
        path.erase(0, 1);
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    return path;
}

std::string NativeOfDeviceIndependent(std::string_view absolute)
{
    if (absolute.size() < 2) return AbsoluteNative("\\");
    if (absolute[1] == '/') return AbsoluteNative(absolute.substr(1));  // no drive is named: the current one
    const bool drive = IsLetter(absolute[1]) && (absolute.size() == 2 || absolute[2] == '/');
    if (drive) return AbsoluteNative(std::string{absolute[1], ':', '\\'}.append(absolute.substr(2)));
    return AbsoluteNative(std::string("\\").append(absolute));
}

std::size_t StepsToRoot(std::string_view absolute)
{
    if (absolute.size() < 2 || absolute[1] == '/') return 0;
    return IsLetter(absolute[1]) && (absolute.size() == 2 || absolute[2] == '/') ? 1 : 2;
}

std::string UrlOfNative(std::string_view absolute)
{
    const std::string path = Slashed(absolute);
    return (path.starts_with("//") ? "file:" : "file:///") + PercentEncoded(path, "/-._~:");
}

}  // namespace openhost
