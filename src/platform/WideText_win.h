#pragma once

#include <string>
#include <string_view>

#include "platform/Files.h"

// The narrow code page (UTF-8 in our own programs, the machine's in other hosts) and what the system's calls take.
namespace platform {

/// Narrow text as it is, for what is no path. Bytes that are no text become U+FFFD.
std::wstring WideText(std::string_view text);
/// The way back; '?' stands for what the code page does not hold, never a letter that merely looks like it.
std::string NarrowText(std::wstring_view text);

/// The absolute path in the form that has no limit of length and in which names stand as they are: `\\?\C:\...` or
/// `\\?\UNC\server\share\...`. Resolved here: slashes, "." and "..", the current folder; kept: dots and blanks at the
/// end of names, one backslash at the end. What begins with `\\?\` or `\\.\` is taken as it is.
/// Empty for what can be no path (nothing, no text, a NUL inside): the system's calls fail on that, too.
std::wstring WidePath(std::string_view path);
std::wstring WidePathOf(std::wstring_view path);  ///< of a wide one
/// The usual form, without `\\?\`. One that the code page does not hold goes by its short names as far as it has
/// such, and with '?' in it where not.
std::string NarrowPath(std::wstring_view path);

/// The name of an entry of a folder. One that the code page does not hold goes by its short name; where that is
/// empty, by a name with '?' in it, which nothing can be opened by.
std::string NarrowName(std::wstring_view name, std::wstring_view shortName);

/// Whether the last name of the path stands for a device (NUL, CON, COM1 ..., with any extension), or the path leads
/// among the devices.
bool IsDeviceName(std::wstring_view path);
/// What may not be created, written, or be the target of renaming and copying: names of devices, and names with a
/// colon, which would be written into a hidden part of another file. `path` as WidePath makes it.
FileResult CheckTargetName(const std::wstring& path);

}  // namespace platform
