#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/FileSteps.h"
#include "platform/HeldFiles.h"
#include "platform/Processes_posix.h"

namespace platform {

FileResult CAppendFile::Open(const std::string& path)
{
    constexpr unsigned kOwnerOnly = 0600;
    Close();
    CDescriptor file(calls::Open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, kOwnerOnly));
    if (!file.Valid()) return {errno};
    struct stat status;
    if (calls::StatusOf(file.Get(), status) != 0) return {errno};
    if (!S_ISREG(status.st_mode)) return {EINVAL};
    if (status.st_size == 0) {
        if (const auto flushed = FlushFolderOf(path); !flushed) return flushed;
    }
    m_file = COpenFile(file.Release());
    return {};
}

FileResult CAppendFile::Write(std::string_view bytes) { return WriteAll(static_cast<int>(m_file.Get()), bytes); }

FileResult CAppendFile::Flush() { return {calls::FlushData(static_cast<int>(m_file.Get())) == 0 ? 0 : errno}; }

FileResult CAppendFile::Truncate(std::uint64_t length)
{
    return {calls::Truncate(static_cast<int>(m_file.Get()), static_cast<off_t>(length)) == 0 ? 0 : errno};
}

namespace {

FileResult Claim(int descriptor)
{
    struct stat status;
    if (calls::StatusOf(descriptor, status) != 0) return {errno};
    if (!S_ISREG(status.st_mode)) return {EINVAL};
    // The lock belongs to this open file, so it also holds against a second open in this process. A file system
    // without locks must not cost the log.
    if (calls::Lock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return {EWOULDBLOCK};
    return {};
}

}  // namespace

FileResult CLogFile::Open(const std::string& path, bool append)
{
    Close();
    CDescriptor file(calls::Open(path, O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644));
    if (!file.Valid()) return {errno};
    if (const auto claimed = Claim(file.Get()); !claimed) return claimed;
    if (!append && calls::Truncate(file.Get(), 0) != 0) return {errno};
    m_file = COpenFile(file.Release());
    return {};
}

FileResult CLogFile::Write(std::string_view bytes)
{
    return IsOpen() ? WriteAll(static_cast<int>(m_file.Get()), bytes) : FileResult{EBADF};
}

std::string CLogFile::Read(std::size_t maxBytes)
{
    std::string bytes(IsOpen() ? maxBytes : 0, '\0');
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count =
            calls::Read(static_cast<int>(m_file.Get()), bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return bytes;
}

bool CLogFile::SeekBegin() { return IsOpen() && lseek(static_cast<int>(m_file.Get()), 0, SEEK_SET) == 0; }

bool CLogFile::SeekEnd() { return IsOpen() && lseek(static_cast<int>(m_file.Get()), 0, SEEK_END) >= 0; }

bool CLogFile::Truncate() { return IsOpen() && calls::Truncate(static_cast<int>(m_file.Get()), 0) == 0; }

bool CLogFile::Flush() { return IsOpen() && FlushDescriptor(static_cast<int>(m_file.Get())).Ok(); }

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
