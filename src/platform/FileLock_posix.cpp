#include "platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/Processes_posix.h"

namespace platform {

CFileLock::CFileLock(CFileLock&& other) noexcept : m_file(std::exchange(other.m_file, kNone)) {}

CFileLock& CFileLock::operator=(CFileLock&& other) noexcept
{
    std::swap(m_file, other.m_file);
    return *this;
}

CFileLock::~CFileLock()
{
    if (IsLocked()) close(static_cast<int>(m_file));
}

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
    m_file = AboveStandardStreams(file.Release());
    return {m_file < 0 ? errno : 0};
}

}  // namespace platform
