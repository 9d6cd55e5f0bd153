#include "platform/FileHandles_posix.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/FileCalls_posix.h"
#include "platform/FileSteps.h"

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

}  // namespace platform
