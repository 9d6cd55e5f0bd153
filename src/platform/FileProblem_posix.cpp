#include <cerrno>

#include "platform/FileProblem.h"

namespace platform {

std::span<const ErrorRow> ErrorRows()
{
    static constexpr ErrorRow kRows[] = {
        {ENOENT, FileProblem::Missing},
        {ENOTDIR, FileProblem::Missing},
        {ENAMETOOLONG, FileProblem::Missing},
        {EEXIST, FileProblem::Exists},
        {EINVAL, FileProblem::NotARegularFile},
        {EISDIR, FileProblem::IsAFolder},
        {EACCES, FileProblem::NoAccess},
        {EPERM, FileProblem::NoAccess},
        {EROFS, FileProblem::NoAccess},
        {EWOULDBLOCK, FileProblem::InUse},
        {ECANCELED, FileProblem::Cancelled},
        {ENOSPC, FileProblem::DiskFull},
        {EDQUOT, FileProblem::DiskFull},
        {EFBIG, FileProblem::TooLarge},
        {ENOMEM, FileProblem::OutOfMemory},
        {EPIPE, FileProblem::NobodyReads},
        {EIO, FileProblem::Other},
    };
    return kRows;
}

FileResult StreamFailure() { return {errno != 0 ? errno : EIO}; }

}  // namespace platform
