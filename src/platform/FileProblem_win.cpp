#include "platform/FileProblem.h"

#include <cerrno>
#include <cstdlib>

#include "platform/Windows_win.h"

// The headers of the compiler do not know these yet.
#ifndef ERROR_DISK_QUOTA_EXCEEDED
#define ERROR_DISK_QUOTA_EXCEEDED 1295L
#endif
#ifndef ERROR_DIRECTORY_NOT_SUPPORTED
#define ERROR_DIRECTORY_NOT_SUPPORTED 336L
#endif

namespace platform {

FileProblem ProblemOf(FileResult result)
{
    switch (result.errorNumber) {
        case ERROR_SUCCESS:
            return FileProblem::None;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_FILENAME_EXCED_RANGE:
        case ERROR_DIRECTORY:  // a file where a folder is needed
            return FileProblem::Missing;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return FileProblem::Exists;
        case ERROR_INVALID_PARAMETER:
        case ERROR_INVALID_NAME:  // of a device, too
            return FileProblem::NotARegularFile;
        case ERROR_DIRECTORY_NOT_SUPPORTED:
            return FileProblem::IsAFolder;
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
        case ERROR_NETWORK_ACCESS_DENIED:
        case ERROR_PRIVILEGE_NOT_HELD:
            return FileProblem::NoAccess;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_USER_MAPPED_FILE:
            return FileProblem::InUse;
        case ERROR_CANCELLED:
            return FileProblem::Canceled;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case ERROR_NOT_ENOUGH_QUOTA:
        case ERROR_DISK_QUOTA_EXCEEDED:
            return FileProblem::DiskFull;
        case ERROR_FILE_TOO_LARGE:
            return FileProblem::TooLarge;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
        case ERROR_NO_SYSTEM_RESOURCES:
        case ERROR_COMMITMENT_LIMIT:
            return FileProblem::OutOfMemory;
        case ERROR_BROKEN_PIPE:
        case ERROR_NO_DATA:
        case ERROR_PIPE_NOT_CONNECTED:
            return FileProblem::NobodyReads;
        default:
            return FileProblem::Other;
    }
}

FileResult Failure(FileProblem problem)
{
    switch (problem) {
        case FileProblem::None:
            return {};
        case FileProblem::Missing:
            return {ERROR_FILE_NOT_FOUND};
        case FileProblem::Exists:
            return {ERROR_FILE_EXISTS};
        case FileProblem::NotARegularFile:
            return {ERROR_INVALID_PARAMETER};
        case FileProblem::IsAFolder:
            return {ERROR_DIRECTORY_NOT_SUPPORTED};
        case FileProblem::NoAccess:
            return {ERROR_ACCESS_DENIED};
        case FileProblem::InUse:
            return {ERROR_SHARING_VIOLATION};
        case FileProblem::Canceled:
            return {ERROR_CANCELLED};
        case FileProblem::DiskFull:
            return {ERROR_DISK_FULL};
        case FileProblem::TooLarge:
            return {ERROR_FILE_TOO_LARGE};
        case FileProblem::OutOfMemory:
            return {ERROR_NOT_ENOUGH_MEMORY};
        case FileProblem::NobodyReads:
            return {ERROR_BROKEN_PIPE};
        case FileProblem::Other:
            break;
    }
    return {ERROR_IO_DEVICE};
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
