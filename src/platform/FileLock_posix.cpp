#include "platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/Processes_posix.h"

namespace platform {

FileResult CFileLock::TryLock(const std::string& path)
{
    constexpr unsigned kOwnerOnly = 0600;
    *this = CFileLock();
    CDescriptor file(calls::Open(path, O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, kOwnerOnly));
    if (!file.Valid()) return {errno};
    if (calls::Lock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
        const bool without = errno == ENOLCK || errno == ENOSYS || errno == ENOTSUP || errno == EINVAL;
        if (!without) return {errno};
    }
    // A child cannot inherit it in the place of a standard stream.
    m_file = COpenFile(AboveStandardStreams(file.Release()));
    return {IsLocked() ? 0 : errno};
}

}  // namespace platform
