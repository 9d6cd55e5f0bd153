#include "openhost/pdf/SourceFile.h"

#include <fcntl.h>
#include <io.h>

#include "openhost/pdf/PdfGuard.h"
#include "platform/FileProblem.h"
#include "platform/Handle_win.h"
#include "platform/WideText_win.h"

namespace openhost {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

CPdfError OpenError(const std::string& path, platform::FileResult failed)
{
    const bool missing = platform::ProblemOf(failed) == platform::FileProblem::Missing;
    return SystemError(path, "cannot open", failed.errorNumber,
                       missing ? PdfProblem::NotFound : PdfProblem::CannotRead);
}

/// Also a folder, of which it is only told that it is one.
platform::CHandle Opened(const std::string& path)
{
    const std::wstring wide = platform::WidePath(path);
    platform::CHandle file(CreateFileW(wide.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file.Valid()) throw OpenError(path, platform::LastFailure());
    return file;
}

}  // namespace

FileHandle OpenForReading(const std::string& path)
{
    platform::CHandle file = Opened(path);
    BY_HANDLE_FILE_INFORMATION facts{};
    const bool known = GetFileType(file.Get()) == FILE_TYPE_DISK && GetFileInformationByHandle(file.Get(), &facts);
    const bool isFolder = known && (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!known || isFolder)
        throw CPdfError(PdfProblem::NotAFile, path + (isFolder ? ": is a folder" : ": is not a regular file"));
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(file.Get()), _O_RDONLY | _O_BINARY);
    if (descriptor < 0) throw OpenError(path, platform::StreamFailure());
    static_cast<void>(file.Release());
    std::FILE* const stream = _fdopen(descriptor, "rb");
    if (stream) return FileHandle(stream);
    const platform::FileResult failed = platform::StreamFailure();
    _close(descriptor);
    throw OpenError(path, failed);
}

const bool kOpenFilesKeepTheirNames = true;

bool SeekTo(std::FILE* file, std::uint64_t position)
{
    return _fseeki64(file, static_cast<std::int64_t>(position), SEEK_SET) == 0;
}

std::optional<std::uint64_t> SizeOf(std::FILE* file)
{
    LARGE_INTEGER size{};
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)));
    if (!GetFileSizeEx(handle, &size)) return std::nullopt;
    return static_cast<std::uint64_t>(size.QuadPart);
}

}  // namespace openhost
