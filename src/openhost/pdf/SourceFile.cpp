#include "openhost/pdf/SourceFile.h"

#include "openhost/pdf/PdfGuard.h"
#include "platform/FileProblem.h"

namespace openhost {
namespace {

using platform::FileProblem;

CPdfError OpenError(const std::string& path, platform::FileResult failed)
{
    switch (platform::ProblemOf(failed)) {
        case FileProblem::IsAFolder:
            return {PdfProblem::NotAFile, path + ": is a folder"};
        case FileProblem::NotARegularFile:
            return {PdfProblem::NotAFile, path + ": is not a regular file"};
        case FileProblem::Missing:
            return SystemError(path, "cannot open", failed.errorNumber, PdfProblem::NotFound);
        default:
            return SystemError(path, "cannot open", failed.errorNumber, PdfProblem::CannotRead);
    }
}

}  // namespace

platform::Stream OpenForReading(const std::string& path)
{
    platform::FileResult opened;
    platform::Stream file = platform::OpenRegularStream(path, opened);
    if (!file) throw OpenError(path, opened);
    return file;
}

bool SeekTo(std::FILE* file, std::uint64_t position)
{
    return fseeko64(file, static_cast<off64_t>(position), SEEK_SET) == 0;
}

std::optional<std::uint64_t> SizeOf(std::FILE* file)
{
    const off64_t end = fseeko64(file, 0, SEEK_END) == 0 ? ftello64(file) : -1;
    if (end < 0 || !SeekTo(file, 0)) return std::nullopt;
    return static_cast<std::uint64_t>(end);
}

std::string ReadAll(const std::string& path, std::uint64_t maxBytes)
{
    const platform::Stream file = OpenForReading(path);
    std::string bytes;
    char chunk[64 * 1024];
    while (const std::size_t got = std::fread(chunk, 1, sizeof chunk, file.get())) {
        if (bytes.size() + got > maxBytes) throw CPdfError(PdfProblem::CannotRead, path, "is too large");
        bytes.append(chunk, got);
    }
    if (std::ferror(file.get())) {
        throw SystemError(path, "cannot read", platform::StreamFailure().errorNumber, PdfProblem::CannotRead);
    }
    return bytes;
}

}  // namespace openhost
