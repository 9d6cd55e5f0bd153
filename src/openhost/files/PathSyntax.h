#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace openhost {

/// The name under which this system's file system is known in stored paths.
extern const char* const kFileSysName;
/// Whether a file system of this name is this system's.
bool NamesFileSys(std::string_view name);

/// The absolute form of a native path, without "." and empty steps and without a separator at its end. ".." stays
/// where what it means depends on links, and is resolved on Windows.
std::string AbsoluteNative(std::string_view native);
/// Whether it starts at the top, or at a drive or share.
bool IsAbsoluteNative(std::string_view native);
/// The folder that holds the item of an absolute path; empty for the top.
std::string FolderOfNative(std::string_view absolute);
/// The last component of an absolute path; empty for the top.
std::string NameOfNative(std::string_view absolute);
std::string JoinNative(std::string_view folder, std::string_view name);
/// Whether this can be one component of a path.
bool IsPlainName(std::string_view name);

/// Between absolute native paths and absolute device-independent ones: "/folder/file", on Windows "/C/folder/file" or
/// "/server/share/folder/file".
std::string DeviceIndependentOfNative(std::string_view absolute);
std::string NativeOfDeviceIndependent(std::string_view absolute);
/// How many steps at the beginning of an absolute device-independent path name a drive or share: ".." stays below.
std::size_t StepsToRoot(std::string_view absolute);

std::string UrlOfNative(std::string_view absolute);
/// For URLs: ASCII letters and digits stay, and the characters of `plain`.
std::string PercentEncoded(std::string_view path, std::string_view plain);

}  // namespace openhost
