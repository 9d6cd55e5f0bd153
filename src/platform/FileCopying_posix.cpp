#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

#include "platform/FileHandles_posix.h"
#include "platform/Files.h"

namespace platform {
namespace {

constexpr mode_t kPermissionBits = 0777;

bool SameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

FileResult CopyBytes(int from, int to)
{
    constexpr std::size_t kAtOnce = 1U << 30;
    while (copy_file_range(from, nullptr, to, nullptr, kAtOnce, 0) > 0) {
    }
    // Where the kernel cannot copy by itself, or stopped early, the rest is copied here; at the end nothing is left.
    std::vector<char> buffer(1U << 18);
    for (;;) {
        const ssize_t count = read(from, buffer.data(), buffer.size());
        if (count == 0) return {};
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return {errno};
        const auto written = WriteAll(to, {buffer.data(), static_cast<std::size_t>(count)});
        if (!written) return written;
    }
}

// File systems without owners and modes refuse these; the copy is good without them.
void CopyAttributes(const struct stat& source, int to)
{
    (void)!fchmod(to, source.st_mode & kPermissionBits);
    const timespec times[] = {source.st_atim, source.st_mtim};
    (void)!futimens(to, times);
}

FileResult CopyTo(const std::string& from, const std::string& target, Existing existing)
{
    CDescriptor source;
    struct stat status;
    if (const auto opened = OpenRegular(from, source, status); !opened) return opened;
    CTemporaryFile copy;
    if (const auto created = copy.CreateBeside(target, 0600); !created) return created;
    if (const auto copied = CopyBytes(source.Get(), copy.Descriptor()); !copied) return copied;
    CopyAttributes(status, copy.Descriptor());
    return copy.Publish(target, existing);
}

// What stands at the target and forbids to replace it. Devices and pipes are never replaced by a file.
FileResult CheckReplaceable(const std::string& to)
{
    struct stat target;
    if (stat(to.c_str(), &target) != 0 || S_ISREG(target.st_mode)) return {};
    return {S_ISDIR(target.st_mode) ? EISDIR : EINVAL};
}

FileResult CheckFree(const std::string& to)
{
    const auto replaceable = CheckReplaceable(to);
    if (replaceable.errorNumber == EISDIR) return replaceable;
    return {NameExists(to) ? EEXIST : 0};
}

bool SameFile(const struct stat& source, const std::string& to)
{
    struct stat target;
    return stat(to.c_str(), &target) == 0 && SameFile(source, target);
}

std::string NameOf(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool SameFolder(const std::string& a, const std::string& b)
{
    const auto folderOf = [](const std::string& path) {
        const auto slash = path.rfind('/');
        return slash == std::string::npos ? std::string(".") : path.substr(0, slash + 1);
    };
    struct stat statusA, statusB;
    return stat(folderOf(a).c_str(), &statusA) == 0 && stat(folderOf(b).c_str(), &statusB) == 0 &&
           SameFile(statusA, statusB);
}

// Two names of one file. Renaming would succeed and leave both, so the old name is removed here; but only when it is
// certainly another name, not the same one on another way or in another letter case.
FileResult MoveOntoOtherName(const std::string& from, const std::string& to, const struct stat& source)
{
    const bool namesAlike = strcasecmp(NameOf(from).c_str(), NameOf(to).c_str()) == 0;
    if (namesAlike && SameFolder(from, to)) return {rename(from.c_str(), to.c_str()) == 0 ? 0 : errno};
    if (source.st_nlink < 2) return {};
    return {unlink(from.c_str()) == 0 ? 0 : errno};
}

FileResult MoveAcross(const std::string& from, const std::string& to, Existing existing)
{
    const auto slash = from.rfind('/');
    const std::string sourceFolder = slash == std::string::npos ? "." : from.substr(0, slash + 1);
    // Asked before the target is touched, and of the user that the file calls act for.
    if (faccessat(AT_FDCWD, sourceFolder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) return {errno};
    if (const auto copied = CopyTo(from, to, existing); !copied) return copied;
    if (const auto flushed = FlushFolderOf(to); !flushed) return flushed;
    if (unlink(from.c_str()) == 0) return {};
    const int error = errno;
    if (existing == Existing::Fail) unlink(to.c_str());
    return {error};
}

}  // namespace

FileResult CopyFile(const std::string& from, const std::string& to, Existing existing)
{
    if (existing == Existing::Fail) {
        const auto free = CheckFree(to);
        return free ? CopyTo(from, to, existing) : free;
    }
    struct stat source;
    if (stat(from.c_str(), &source) != 0) return {errno};
    if (const auto replaceable = CheckReplaceable(to); !replaceable) return replaceable;
    if (SameFile(source, to)) return {EINVAL};
    return CopyTo(from, ThroughLinks(to), existing);
}

FileResult MoveFile(const std::string& from, const std::string& to, Existing existing)
{
    struct stat source, target;
    if (lstat(from.c_str(), &source) != 0) return {errno};
    if (S_ISDIR(source.st_mode)) return {EISDIR};
    if (existing == Existing::Fail) {
        if (const auto free = CheckFree(to); !free) return free;
        const auto renamed = RenameExclusively(from, to);
        return renamed.errorNumber == EXDEV ? MoveAcross(from, to, existing) : renamed;
    }
    if (const auto replaceable = CheckReplaceable(to); !replaceable) return replaceable;
    if (lstat(to.c_str(), &target) == 0 && SameFile(source, target)) return MoveOntoOtherName(from, to, source);
    // A link moved onto the file that it leads to would replace the only content by a link to itself.
    struct stat content;
    if (S_ISLNK(source.st_mode) && stat(from.c_str(), &content) == 0 && SameFile(content, to)) return {EINVAL};
    if (rename(from.c_str(), to.c_str()) == 0) return {};
    return errno == EXDEV ? MoveAcross(from, to, existing) : FileResult{errno};
}

}  // namespace platform
