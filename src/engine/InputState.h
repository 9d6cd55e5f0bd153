// Whether an input file is still what was opened, and whether two paths lead to one file.
#pragma once

#include "platform/Files.h"

#include <optional>
#include <string>

/// Behind "because".
inline constexpr char kInputChanged[] = "the input changed while it was processed";

/// Whether another file, or another version of it, stands at the path than at the time of the stamp. A file that is
/// gone counts as unchanged: nothing of it can be lost any more. So does one that nobody has taken the stamp of.
[[nodiscard]] bool HasChanged(const std::string& path, const std::optional<platform::FileStamp>& known);

/// Also when one of them is reached over links; by text alone when there is no such file yet.
[[nodiscard]] bool IsSameFile(const std::string& path, const std::string& otherPath);
/// An empty path is the current folder.
[[nodiscard]] bool IsSameFolder(const std::string& path, const std::string& otherPath);
