#pragma once

#include <optional>
#include <string>

#include "base/Overseer.h"
#include "platform/Files.h"

// How the file services of this folder ask the overseer; not for callers outside.
namespace platform {

/// Nothing when the act is to be done now; otherwise its result, because it is refused or only pretended.
std::optional<FileResult> AskOverseer(COverseer::Act act, const std::string& file, const std::string& target);

/// During a trial run nothing is created, only checked.
bool Pretending();
/// What pretended acts have made of the path; nothing when the disk tells.
std::optional<bool> PretendedExistence(const std::string& path);

/// What the system would say to the act of putting a file into the folder of `path`, as far as that can be asked.
FileResult CheckFolderOf(const std::string& path);

}  // namespace platform
