#include "platform/FileProblem.h"

#include <cerrno>

namespace platform {

FileProblem ProblemOf(FileResult result)
{
    switch (result.errorNumber) {
        case 0:
            return FileProblem::None;
        case ENOENT:
        case ENOTDIR:
        case ENAMETOOLONG:
            return FileProblem::Missing;
        case EEXIST:
            return FileProblem::Exists;
        case EINVAL:
            return FileProblem::NotARegularFile;
        case EISDIR:
            return FileProblem::IsAFolder;
        case EACCES:
        case EPERM:
        case EROFS:
            return FileProblem::NoAccess;
        case EWOULDBLOCK:
            return FileProblem::InUse;
        case ECANCELED:
            return FileProblem::Canceled;
        case ENOSPC:
        case EDQUOT:
            return FileProblem::DiskFull;
        case EFBIG:
            return FileProblem::TooLarge;
        case ENOMEM:
            return FileProblem::OutOfMemory;
        case EPIPE:
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
            return {ENOENT};
        case FileProblem::Exists:
            return {EEXIST};
        case FileProblem::NotARegularFile:
            return {EINVAL};
        case FileProblem::IsAFolder:
            return {EISDIR};
        case FileProblem::NoAccess:
            return {EACCES};
        case FileProblem::InUse:
            return {EWOULDBLOCK};
        case FileProblem::Canceled:
            return {ECANCELED};
        case FileProblem::DiskFull:
            return {ENOSPC};
        case FileProblem::TooLarge:
            return {EFBIG};
        case FileProblem::OutOfMemory:
            return {ENOMEM};
        case FileProblem::NobodyReads:
            return {EPIPE};
        case FileProblem::Other:
            break;
    }
    return {EIO};
}

FileResult StreamFailure() { return {errno != 0 ? errno : EIO}; }

}  // namespace platform
