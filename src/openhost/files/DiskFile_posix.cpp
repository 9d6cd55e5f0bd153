#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <utility>

#include "hostapi/HostConstants.h"
#include "hostapi/HostErrors.h"
#include "openhost/files/DiskFile.h"
#include "platform/FileCalls_posix.h"

namespace openhost {

namespace calls = platform::calls;

ASErrorCode FileErrorFromSystem(int errorNumber)
{
    switch (errorNumber) {
        case ENOENT:
        case ENOTDIR:
        case ENAMETOOLONG:
            return fileErrFNF;
        case EACCES:
        case EPERM:
        case EBADF:
            return fileErrPerm;
        case EROFS:
            return fileErrVLocked;
        case ENOSPC:
        case EDQUOT:
            return fileErrDiskFull;
        case EEXIST:
            return fileErrExists;
        case ENOTEMPTY:
            return fileErrBusy;
        case EBUSY:
        case ETXTBSY:
            return fileErrBusy;
        case EFBIG:
        case EOVERFLOW:
            return fileErrTooBig;
        case EIO:
            return fileErrIO;
        case EMFILE:
        case ENFILE:
        case EISDIR:
        case ELOOP:
        case ENXIO:
            return fileErrOpenFailed;
        default:
            return fileErrGeneral;
    }
}

CDiskFile::~CDiskFile() { static_cast<void>(Close()); }

CDiskFile::CDiskFile(CDiskFile&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

CDiskFile& CDiskFile::operator=(CDiskFile&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

ASErrorCode CDiskFile::Open(const std::string& nativePath, DiskFileMode mode)
{
    if (nativePath.find('\0') != std::string::npos) return fileErrFNF;
    int flags = mode.write ? (mode.read ? O_RDWR : O_WRONLY) : O_RDONLY;
    flags |= O_CLOEXEC | O_NONBLOCK;  // a pipe without a partner must not block the host
    if (mode.create) flags |= O_CREAT;
    const int descriptor = calls::Open(nativePath, flags, 0666);
    if (descriptor < 0) return FileErrorFromSystem(errno);
    struct stat facts;
    const bool usable = calls::StatusOf(descriptor, facts) == 0 && (S_ISREG(facts.st_mode) || S_ISCHR(facts.st_mode));
    if (!usable) {
        close(descriptor);
        return fileErrOpenFailed;
    }
    Close();
    m_descriptor = descriptor;
    return 0;
}

ASErrorCode CDiskFile::Close()
{
    const int descriptor = std::exchange(m_descriptor, -1);
    if (descriptor < 0 || calls::Close(descriptor) == 0 || errno == EINTR) return 0;
    return FileErrorFromSystem(errno);
}

ASErrorCode CDiskFile::ReadAt(std::uint64_t position, char* bytes, std::size_t count, std::size_t* done)
{
    *done = 0;
    while (*done < count) {
        const ssize_t part =
            calls::ReadAt(m_descriptor, bytes + *done, count - *done, static_cast<off_t>(position + *done));
        if (part < 0 && errno == EINTR) continue;
        if (part < 0) return FileErrorFromSystem(errno);
        if (part == 0) break;
        *done += static_cast<std::size_t>(part);
    }
    return 0;
}

ASErrorCode CDiskFile::WriteAt(std::uint64_t position, const char* bytes, std::size_t count, std::size_t* done)
{
    *done = 0;
    while (*done < count) {
        const ssize_t part =
            calls::WriteAt(m_descriptor, bytes + *done, count - *done, static_cast<off_t>(position + *done));
        if (part < 0 && errno == EINTR) continue;
        if (part <= 0) return part < 0 ? FileErrorFromSystem(errno) : static_cast<ASErrorCode>(fileErrWrite);
        *done += static_cast<std::size_t>(part);
    }
    return 0;
}

ASErrorCode CDiskFile::Length(std::uint64_t* length) const
{
    struct stat facts;
    if (calls::StatusOf(m_descriptor, facts) != 0) return FileErrorFromSystem(errno);
    *length = static_cast<std::uint64_t>(facts.st_size);
    return 0;
}

ASErrorCode CDiskFile::SetLength(std::uint64_t length)
{
    return calls::Truncate(m_descriptor, static_cast<off_t>(length)) == 0 ? 0 : FileErrorFromSystem(errno);
}

ASErrorCode CDiskFile::FlushToDisk() { return calls::Flush(m_descriptor) == 0 ? 0 : FileErrorFromSystem(errno); }

bool CDiskFile::IsSame(const std::string& nativePath) const
{
    struct stat mine;
    struct stat other;
    return m_descriptor >= 0 && calls::StatusOf(m_descriptor, mine) == 0 && calls::Status(nativePath, other) == 0 &&
           mine.st_dev == other.st_dev && mine.st_ino == other.st_ino;
}

namespace {

ASTimeRec TimeRecord(std::time_t seconds)
{
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    ASTimeRec record{};
    record.year = static_cast<ASInt16>(parts.tm_year + 1900);
    record.month = static_cast<ASInt16>(parts.tm_mon + 1);
    record.date = static_cast<ASInt16>(parts.tm_mday);
    record.hour = static_cast<ASInt16>(parts.tm_hour);
    record.minute = static_cast<ASInt16>(parts.tm_min);
    record.second = static_cast<ASInt16>(parts.tm_sec);
    record.day = static_cast<ASInt16>(parts.tm_wday);
    return record;
}

}  // namespace

ASFileSysItemPropsRec ItemProperties(const std::string& nativePath)
{
    ASFileSysItemPropsRec record{};
    record.type = kASFileSysUnknown;
    struct stat facts;
    if (calls::Status(nativePath, facts) != 0) return record;
    record.isThere = 1;
    record.type = S_ISDIR(facts.st_mode) ? kASFileSysFolder : kASFileSysFile;
    record.isHidden = nativePath.substr(nativePath.rfind('/') + 1).starts_with('.');
    record.isReadOnly = calls::Access(nativePath, W_OK) != 0;
    record.modDateKnown = 1;
    record.modDate = TimeRecord(facts.st_mtime);
    if (record.type == kASFileSysFile) {
        const auto size = static_cast<std::uint64_t>(facts.st_size);
        record.fileSize = static_cast<ASByteCount>(size);
        record.fileSizeHigh = static_cast<ASByteCount>(size >> 32);
    }
    return record;
}

ASErrorCode MakeFolder(const std::string& nativePath)
{
    return calls::MakeFolder(nativePath) == 0 ? 0 : FileErrorFromSystem(errno);
}

ASErrorCode RemoveEmptyFolder(const std::string& nativePath)
{
    return calls::RemoveFolder(nativePath) == 0 ? 0 : FileErrorFromSystem(errno);
}

std::optional<std::uint64_t> FreeSpaceIn(const std::string& nativeFolder)
{
    struct statvfs facts;
    if (::statvfs(nativeFolder.c_str(), &facts) != 0) return std::nullopt;
    return static_cast<std::uint64_t>(facts.f_bavail) * facts.f_frsize;
}

}  // namespace openhost
