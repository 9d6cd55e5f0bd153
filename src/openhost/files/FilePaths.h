// Paths as this system writes them, and as plug-ins hold them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "hostapi/HostRecords.h"
#include "openhost/core/Handles.h"

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

/// The absolute native path of a file or folder that need not exist, held by plug-ins as ASPathName. Bytes as the
/// system has them, without "." and empty steps.
class CFilePath {
public:
    /// A relative path is made absolute against the current folder. Raises genErrBadParm for an empty one.
    explicit CFilePath(std::string_view native);

    const std::string& Native() const { return m_native; }
    std::string Name() const;               // the last component; empty for the top
    std::string Folder() const;             // the folder that holds the item; empty for the top
    std::string DeviceIndependent() const;  // "/folder/file", with a drive "/C/folder/file"

private:
    std::string m_native;
};

/// The absolute native path of device-independent text. Relative text starts from `relativeTo`, that is the folder
/// itself when it is one, else the folder that holds the file; null: the current folder. Raises genErrBadParm for an
/// empty text.
std::string NativeFromDeviceIndependent(std::string_view text, const CFilePath* relativeTo);
/// The device-independent text of `path` as seen from `relativeTo` in the same sense; absolute without one.
std::string DeviceIndependentFrom(const CFilePath& path, const CFilePath* relativeTo);

/// All living paths; each is released exactly once.
class CPaths {
public:
    CHandles<CFilePath, ASPathName> handles{"path"};
};

/// Raises genErrBadParm unless `path` is a living path.
const CFilePath& PathAt(ASPathName path);
/// A new path that the caller releases.
ASPathName NewPath(std::string_view native);
void ReleasePath(ASPathName path);
std::size_t LivePaths();

/// The file system of the machine: the only one.
ASFileSys DefaultFileSys();
/// Null means the default one. Raises genErrBadParm for a file system that is not this host's.
void RequireFileSys(const ASFileSysRec* fileSys);

}  // namespace openhost
