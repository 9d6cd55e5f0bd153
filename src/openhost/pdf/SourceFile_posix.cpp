#include "openhost/pdf/SourceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "openhost/pdf/PdfGuard.h"

namespace openhost {
namespace {

CPdfError OpenError(const std::string& path, int errorNumber)
{
    const bool missing = errorNumber == ENOENT || errorNumber == ENOTDIR || errorNumber == ENAMETOOLONG;
    return SystemError(path, "cannot open", errorNumber, missing ? PdfProblem::NotFound : PdfProblem::CannotRead);
}

}  // namespace

FileHandle OpenForReading(const std::string& path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) throw OpenError(path, errno);
    struct stat status = {};
    const bool known = ::fstat(descriptor, &status) == 0;
    if (!known || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        throw CPdfError(PdfProblem::NotAFile,
                        path + (known && S_ISDIR(status.st_mode) ? ": is a folder" : ": is not a regular file"));
    }
    std::FILE* file = ::fdopen(descriptor, "rb");
    if (!file) {
        const int errorNumber = errno;
        ::close(descriptor);
        throw OpenError(path, errorNumber);
    }
    return FileHandle(file);
}

const bool kOpenFilesKeepTheirNames = false;

bool SeekTo(std::FILE* file, std::uint64_t position)
{
    return ::fseeko(file, static_cast<off_t>(position), SEEK_SET) == 0;
}

std::optional<std::uint64_t> SizeOf(std::FILE* file)
{
    struct stat status = {};
    if (::fstat(::fileno(file), &status) != 0) return std::nullopt;
    return static_cast<std::uint64_t>(status.st_size);
}

}  // namespace openhost
