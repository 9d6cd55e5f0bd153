#ifndef FERRULE_OPENHOST_FILES_PATH_SYNTAX_H
#define FERRULE_OPENHOST_FILES_PATH_SYNTAX_H

#include <string>
#include <string_view>

namespace openhost {

/// The name under which this system's file system is known in stored paths.
extern const char* const kFileSysName;

/// The absolute form of a native path, without "." and empty steps and without a separator at its end. ".." stays:
/// what it means depends on links.
std::string AbsoluteNative(std::string_view native);
/// The folder that holds the item of an absolute path; empty for the top.
std::string FolderOfNative(std::string_view absolute);
/// The last component of an absolute path; empty for the top.
std::string NameOfNative(std::string_view absolute);
std::string JoinNative(std::string_view folder, std::string_view name);
/// Whether this can be one component of a path.
bool IsPlainName(std::string_view name);

/// Between absolute native paths and absolute device-independent ones ("/folder/file", with drives "/c/folder/file").
std::string DeviceIndependentOfNative(std::string_view absolute);
std::string NativeOfDeviceIndependent(std::string_view absolute);

std::string UrlOfNative(std::string_view absolute);

}  // namespace openhost

#endif
