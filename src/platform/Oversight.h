#pragma once

#include <optional>
#include <string>

#include "platform/Files.h"
#include "platform/Overseer.h"

// How the file services of this folder ask the overseer; not for callers outside.
namespace platform {

/// Nothing when the act is to be done now; otherwise its result, because it is refused or only pretended.
std::optional<FileResult> AskOverseer(COverseer::Act act, const std::string& file, const std::string& target);

/// During a trial run nothing is created, only checked.
bool Pretending();
/// What pretended acts have made of the path; nothing when the disk tells.
std::optional<bool> PretendedExistence(const std::string& path);

/// A new name for a temporary file of this module. Not derived from any target's, which may already have the greatest
/// length.
std::string NextTemporaryName(unsigned long processId);

/// What the system would say to the act of putting a file into the folder of `path`, as far as that can be asked.
FileResult CheckFolderOf(const std::string& path);

}  // namespace platform
