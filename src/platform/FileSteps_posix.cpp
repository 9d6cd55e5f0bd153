#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <cerrno>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/FileSteps.h"

namespace platform {
namespace {

FileKind KindOf(mode_t mode)
{
    if (S_ISREG(mode)) return FileKind::Regular;
    if (S_ISDIR(mode)) return FileKind::Folder;
    return S_ISLNK(mode) ? FileKind::Link : FileKind::Other;
}

FileStatus Told(const struct stat& status)
{
    return {
        .kind = KindOf(status.st_mode), .device = status.st_dev, .inode = status.st_ino, .links = status.st_nlink};
}

}  // namespace

FileResult StatusOf(const std::string& path, FileStatus& status)
{
    struct stat found;
    if (calls::Status(path, found) != 0) return {errno};
    status = Told(found);
    return {};
}

FileResult StatusOfName(const std::string& path, FileStatus& status)
{
    struct stat found;
    if (calls::LinkStatus(path, found) != 0) return {errno};
    status = Told(found);
    return {};
}

namespace {

FileResult AskIfThere(FileResult (*ask)(const std::string&, FileStatus&), const std::string& path, FileStatus& status,
                      bool& isThere)
{
    isThere = false;
    if (PretendedExistence(path) == false) return {};
    const int error = ask(path, status).errorNumber;
    isThere = error == 0;
    const bool missing = error == ENOENT || error == ENOTDIR || error == ELOOP;
    return {missing ? 0 : error};
}

}  // namespace

FileResult StatusIfThere(const std::string& path, FileStatus& status, bool& isThere)
{
    return AskIfThere(StatusOf, path, status, isThere);
}

FileResult StatusOfNameIfThere(const std::string& path, FileStatus& status, bool& isThere)
{
    return AskIfThere(StatusOfName, path, status, isThere);
}

bool SameName(const std::string& a, const std::string& b)
{
    const std::string folderA = FolderPrefix(a), folderB = FolderPrefix(b);
    if (strcasecmp(a.c_str() + folderA.size(), b.c_str() + folderB.size()) != 0) return false;
    FileStatus statusA, statusB;
    return StatusOf(folderA.empty() ? "." : folderA, statusA) && StatusOf(folderB.empty() ? "." : folderB, statusB) &&
           statusA.SameFileAs(statusB);
}

FileResult CheckWritable(const std::string& path) { return {calls::Access(path, W_OK) == 0 ? 0 : errno}; }

FileResult CheckRemovable(const std::string& path) { return CheckFolderOf(path); }

FileResult CheckFolderOf(const std::string& path)
{
    std::string folder = FolderPrefix(path);
    if (folder.empty()) folder = ".";
    return {calls::Access(folder, W_OK | X_OK) == 0 ? 0 : errno};
}

FileResult RenameReplacing(const std::string& from, const std::string& to)
{
    return {calls::Rename(from, to) == 0 ? 0 : errno};
}

bool IsOtherFileSystem(FileResult renamed) { return renamed.errorNumber == EXDEV; }

FileResult RemoveName(const std::string& path) { return {calls::Unlink(path) == 0 ? 0 : errno}; }

FileResult RemoveMoved(const std::string& path) { return RemoveName(path); }

FileResult RenameExclusively(const std::string& from, const std::string& to)
{
    if (calls::RenameNoReplace(from, to) == 0) return {};
    if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP) return {errno};
    const auto linked = RenameByLink(from, to);
    const bool noLinks = linked.errorNumber == EPERM || linked.errorNumber == ENOTSUP ||
                         linked.errorNumber == ENOSYS || linked.errorNumber == EMLINK;
    return noLinks ? RenameOverClaim(from, to) : linked;
}

FileResult RenameByLink(const std::string& from, const std::string& to)
{
    if (calls::Link(from, to) != 0) return {errno};
    if (calls::Unlink(from) == 0) return {};
    const int error = errno;
    calls::Unlink(to);
    return {error};
}

FileResult RenameOverClaim(const std::string& from, const std::string& to)
{
    const CDescriptor claim(calls::Open(to, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!claim.Valid()) return {errno};
    if (calls::Rename(from, to) == 0) return {};
    const int error = errno;
    calls::Unlink(to);
    return {error};
}

FileResult FlushFolderOf(const std::string& path)
{
    std::string folder = FolderPrefix(path);
    if (folder.empty()) folder = ".";
    const CDescriptor opened(calls::Open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.Valid() || calls::Flush(opened.Get()) == 0 || errno != EIO) return {};
    return {EIO};
}

}  // namespace platform
