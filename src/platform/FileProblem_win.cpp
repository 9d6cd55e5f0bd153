#include <cerrno>
#include <cstdlib>

#include "platform/FileProblem.h"
#include "platform/Windows_win.h"

// The headers of the compiler do not know these yet.
#ifndef ERROR_DISK_QUOTA_EXCEEDED
#define ERROR_DISK_QUOTA_EXCEEDED 1295L
#endif
#ifndef ERROR_DIRECTORY_NOT_SUPPORTED
#define ERROR_DIRECTORY_NOT_SUPPORTED 336L
#endif

namespace platform {

std::span<const ErrorRow> ErrorRows()
{
    static constexpr ErrorRow kRows[] = {
        {ERROR_FILE_NOT_FOUND, FileProblem::Missing},
        {ERROR_PATH_NOT_FOUND, FileProblem::Missing},
        {ERROR_INVALID_DRIVE, FileProblem::Missing},
        {ERROR_BAD_NETPATH, FileProblem::Missing},
        {ERROR_BAD_NET_NAME, FileProblem::Missing},
        {ERROR_BAD_PATHNAME, FileProblem::Missing},
        {ERROR_FILENAME_EXCED_RANGE, FileProblem::Missing},
        {ERROR_DIRECTORY, FileProblem::Missing},  // a file where a folder is needed
        {ERROR_FILE_EXISTS, FileProblem::Exists},
        {ERROR_ALREADY_EXISTS, FileProblem::Exists},
        {ERROR_INVALID_PARAMETER, FileProblem::NotARegularFile},
        {ERROR_INVALID_NAME, FileProblem::NotARegularFile},  // of a device, too
        {ERROR_DIRECTORY_NOT_SUPPORTED, FileProblem::IsAFolder},
        {ERROR_ACCESS_DENIED, FileProblem::NoAccess},
        {ERROR_WRITE_PROTECT, FileProblem::NoAccess},
        {ERROR_NETWORK_ACCESS_DENIED, FileProblem::NoAccess},
        {ERROR_PRIVILEGE_NOT_HELD, FileProblem::NoAccess},
        {ERROR_SHARING_VIOLATION, FileProblem::InUse},
        {ERROR_LOCK_VIOLATION, FileProblem::InUse},
        {ERROR_USER_MAPPED_FILE, FileProblem::InUse},
        {ERROR_CANCELLED, FileProblem::Cancelled},
        {ERROR_DISK_FULL, FileProblem::DiskFull},
        {ERROR_HANDLE_DISK_FULL, FileProblem::DiskFull},
        {ERROR_NOT_ENOUGH_QUOTA, FileProblem::DiskFull},
        {ERROR_DISK_QUOTA_EXCEEDED, FileProblem::DiskFull},
        {ERROR_FILE_TOO_LARGE, FileProblem::TooLarge},
        {ERROR_NOT_ENOUGH_MEMORY, FileProblem::OutOfMemory},
        {ERROR_OUTOFMEMORY, FileProblem::OutOfMemory},
        {ERROR_NO_SYSTEM_RESOURCES, FileProblem::OutOfMemory},
        {ERROR_COMMITMENT_LIMIT, FileProblem::OutOfMemory},
        {ERROR_BROKEN_PIPE, FileProblem::NobodyReads},
        {ERROR_NO_DATA, FileProblem::NobodyReads},
        {ERROR_PIPE_NOT_CONNECTED, FileProblem::NobodyReads},
        {ERROR_IO_DEVICE, FileProblem::Other},
    };
    return kRows;
}

// The streams of the C library keep the system's number beside errno, and nothing there when they found out
// themselves.
FileResult StreamFailure()
{
    if (_doserrno != 0) return {static_cast<int>(_doserrno)};
    switch (errno) {
        case ENOENT:
            return Failure(FileProblem::Missing);
        case EACCES:
            return Failure(FileProblem::NoAccess);
        case ENOSPC:
            return Failure(FileProblem::DiskFull);
        case EFBIG:
            return Failure(FileProblem::TooLarge);
        case ENOMEM:
        case EMFILE:
            return Failure(FileProblem::OutOfMemory);
        case EPIPE:
            return Failure(FileProblem::NobodyReads);
        default:
            return Failure(FileProblem::Other);
    }
}

}  // namespace platform
