#include "platform/FileHandles_posix.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

namespace platform {

CDescriptor::~CDescriptor()
{
    if (m_fd >= 0) close(m_fd);
}

namespace {

std::string FolderPrefix(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// Not derived from the target's name, which may already have the greatest length.
std::string TemporaryName()
{
    static std::atomic<unsigned> counter{0};
    char name[64];
    std::snprintf(name, sizeof name, ".ferrule-%ld-%u.tmp", static_cast<long>(getpid()), ++counter);
    return name;
}

}  // namespace

CTemporaryFile::~CTemporaryFile()
{
    if (!m_path.empty()) unlink(m_path.c_str());
}

FileResult CTemporaryFile::CreateBeside(const std::string& target, unsigned mode)
{
    constexpr int kAttempts = 1000;  // names of a dead process may be in the way
    const std::string folder = FolderPrefix(target);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::string path = folder + TemporaryName();
        CDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, static_cast<mode_t>(mode)));
        if (file.Valid()) {
            m_descriptor = std::move(file);
            m_path = std::move(path);
            return {};
        }
        if (errno != EEXIST) return {errno};
    }
    return {EEXIST};
}

FileResult CTemporaryFile::Publish(const std::string& target, Existing existing)
{
    if (const auto flushed = FlushDescriptor(m_descriptor.Get()); !flushed) return flushed;
    if (existing == Existing::Fail) {
        if (const auto renamed = RenameExclusively(m_path, target); !renamed) return renamed;
    } else if (rename(m_path.c_str(), target.c_str()) != 0) {
        return {errno};
    }
    m_path.clear();
    return {};
}

FileResult OpenRegular(const std::string& path, CDescriptor& file, struct stat& status)
{
    // Asked before opening, because opening a device may already act on it.
    if (stat(path.c_str(), &status) != 0) return {errno};
    if (S_ISDIR(status.st_mode)) return {EISDIR};
    if (!S_ISREG(status.st_mode)) return {EINVAL};
    CDescriptor opened(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!opened.Valid()) return {errno};
    if (fstat(opened.Get(), &status) != 0) return {errno};
    if (!S_ISREG(status.st_mode)) return {EINVAL};
    file = std::move(opened);
    return {};
}

FileResult WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written > 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0)
            return {EIO};
        else if (errno != EINTR)
            return {errno};
    }
    return {};
}

FileResult FlushDescriptor(int descriptor)
{
    if (fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP) return {};
    return {errno};
}

FileResult FlushFolderOf(const std::string& path)
{
    std::string folder = FolderPrefix(path);
    if (folder.empty()) folder = ".";
    const CDescriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.Valid() || fsync(opened.Get()) == 0 || errno != EIO) return {};
    return {EIO};
}

FileResult RenameExclusively(const std::string& from, const std::string& to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return {};
    if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP) return {errno};
    const auto linked = RenameByLink(from, to);
    const bool noLinks = linked.errorNumber == EPERM || linked.errorNumber == ENOTSUP ||
                         linked.errorNumber == ENOSYS || linked.errorNumber == EMLINK;
    return noLinks ? RenameOverClaim(from, to) : linked;
}

FileResult RenameByLink(const std::string& from, const std::string& to)
{
    if (link(from.c_str(), to.c_str()) != 0) return {errno};
    if (unlink(from.c_str()) == 0) return {};
    const int error = errno;
    unlink(to.c_str());
    return {error};
}

FileResult RenameOverClaim(const std::string& from, const std::string& to)
{
    const CDescriptor claim(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!claim.Valid()) return {errno};
    if (rename(from.c_str(), to.c_str()) == 0) return {};
    const int error = errno;
    unlink(to.c_str());
    return {error};
}

std::string ThroughLinks(const std::string& path)
{
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
    std::string resolved = CanonicalPath(path);
    return resolved.empty() ? path : resolved;
}

}  // namespace platform
