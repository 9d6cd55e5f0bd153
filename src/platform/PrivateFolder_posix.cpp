#include "platform/PrivateFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"

namespace platform {
namespace {

constexpr mode_t kOwnersMode = 0700;

}  // namespace

FileResult CreatePrivateFolder(const std::string& path)
{
    return {calls::MakeFolder(path, kOwnersMode) == 0 ? 0 : errno};
}

FileResult MakeFolderPrivate(const std::string& path)
{
    const CDescriptor folder(calls::Open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return {folder.Valid() && calls::SetMode(folder.Get(), kOwnersMode) == 0 ? 0 : errno};
}

bool IsOwnFolder(const std::string& path)
{
    struct stat status;
    return calls::LinkStatus(path, status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

}  // namespace platform
