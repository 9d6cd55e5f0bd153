#include "platform/FileHandles_posix.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "platform/FileCalls_posix.h"
#include "platform/Oversight.h"

namespace platform {

CDescriptor::~CDescriptor()
{
    if (m_fd >= 0) close(m_fd);
}

std::string FolderPrefix(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

namespace {

// Not derived from the target's name, which may already have the greatest length.
std::string TemporaryName()
{
    static std::atomic<unsigned> counter{0};
    return OwnTemporaryPrefix() + std::to_string(getpid()) + '-' + std::to_string(++counter) + ".tmp";
}

}  // namespace

CTemporaryFile::~CTemporaryFile()
{
    if (!m_path.empty()) calls::Unlink(m_path);
}

FileResult CTemporaryFile::CreateBeside(const std::string& target, unsigned mode)
{
    constexpr int kAttempts = 1000;  // names of a dead process may be in the way
    const std::string folder = FolderPrefix(target);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::string path = folder + TemporaryName();
        CDescriptor file(calls::Open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (file.Valid()) {
            m_descriptor = std::move(file);
            m_path = std::move(path);
            return {};
        }
        if (errno != EEXIST) return {errno};
    }
    return {EEXIST};
}

FileResult CTemporaryFile::Complete()
{
    if (const auto flushed = FlushDescriptor(m_descriptor.Get()); !flushed) return flushed;
    // Some file systems tell only now that the disk was full.
    if (calls::Close(m_descriptor.Release()) == 0 || errno == EINTR) return {};
    return {errno};
}

FileResult CTemporaryFile::PutInPlace(const std::string& target, Existing existing)
{
    if (existing == Existing::Fail) {
        if (const auto renamed = RenameExclusively(m_path, target); !renamed) return renamed;
    } else if (calls::Rename(m_path, target) != 0) {
        return {errno};
    }
    m_path.clear();
    return {};
}

FileResult OpenRegular(const std::string& path, CDescriptor& file, struct stat& status)
{
    if (PretendedExistence(path) == false) return {ENOENT};
    // Asked before opening, because opening a device may already act on it.
    if (calls::Status(path, status) != 0) return {errno};
    if (S_ISDIR(status.st_mode)) return {EISDIR};
    if (!S_ISREG(status.st_mode)) return {EINVAL};
    CDescriptor opened(calls::Open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!opened.Valid()) return {errno};
    if (calls::StatusOf(opened.Get(), status) != 0) return {errno};
    if (!S_ISREG(status.st_mode)) return {EINVAL};
    file = std::move(opened);
    return {};
}

FileResult StatusIfThere(const std::string& path, struct stat& status, bool& isThere)
{
    isThere = false;
    if (PretendedExistence(path) == false) return {};
    isThere = calls::Status(path, status) == 0;
    const bool missing = !isThere && (errno == ENOENT || errno == ENOTDIR || errno == ELOOP);
    return {isThere || missing ? 0 : errno};
}

FileResult WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = calls::Write(descriptor, bytes.data(), bytes.size());
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
    if (calls::Flush(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP) return {};
    return {errno};
}

FileResult FlushFolderOf(const std::string& path)
{
    std::string folder = FolderPrefix(path);
    if (folder.empty()) folder = ".";
    const CDescriptor opened(calls::Open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.Valid() || calls::Flush(opened.Get()) == 0 || errno != EIO) return {};
    return {EIO};
}

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

FileResult FollowLinks(const std::string& path, std::string& end)
{
    constexpr int kLongestChain = 40;
    end = path;
    for (int links = 0; links < kLongestChain; ++links) {
        char text[PATH_MAX];
        const ssize_t length = calls::ReadLink(end, text, sizeof text);
        if (length < 0) return {errno == EINVAL || errno == ENOENT || errno == ENOTDIR ? 0 : errno};
        const std::string next(text, static_cast<std::size_t>(length));
        end = next.starts_with('/') ? next : FolderPrefix(end) + next;
    }
    return {ELOOP};
}

FileResult CheckFolderOf(const std::string& path)
{
    std::string folder = FolderPrefix(path);
    if (folder.empty()) folder = ".";
    return {calls::Access(folder, W_OK | X_OK) == 0 ? 0 : errno};
}

}  // namespace platform
