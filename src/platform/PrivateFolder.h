#pragma once

#include <string>

#include "platform/Files.h"

namespace platform {

/// Makes a folder that only this user may look into, list or change, besides those who keep the system running. Fails:
/// "exists" when the name is taken, by whomever.
FileResult CreatePrivateFolder(const std::string& path);
/// Takes the rights of all others from a folder that is there.
FileResult MakeFolderPrivate(const std::string& path);
/// Whether the name itself, no link, is a folder that belongs to the user of this process.
bool IsOwnFolder(const std::string& path);

}  // namespace platform
