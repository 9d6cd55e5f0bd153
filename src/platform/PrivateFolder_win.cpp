#include "platform/PrivateFolder.h"

#include "platform/FileHandles_win.h"
#include "platform/OwnerOnly_win.h"
#include "platform/WideText_win.h"

namespace platform {

FileResult CreatePrivateFolder(const std::string& path)
{
    COwnerOnly ownerOnly;
    if (const auto made = ownerOnly.Make(); !made) return made;
    return ResultOf(CreateDirectoryW(WidePath(path).c_str(), ownerOnly.Attributes()) != FALSE);
}

// It lies where the user keeps his settings, which the system keeps private.
FileResult MakeFolderPrivate(const std::string&) { return {}; }

// The folder for temporary files is the user's own.
bool IsOwnFolder(const std::string& path)
{
    const auto wide = WidePath(path);
    return IsFolder(wide) && !IsLink(wide);
}

}  // namespace platform
