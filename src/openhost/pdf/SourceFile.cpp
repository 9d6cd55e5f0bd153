#include "openhost/pdf/SourceFile.h"

#include "openhost/pdf/PdfGuard.h"
#include "platform/FileProblem.h"

namespace openhost {

std::string ReadAll(const std::string& path, std::uint64_t maxBytes)
{
    const FileHandle file = OpenForReading(path);
    std::string bytes;
    char chunk[64 * 1024];
    while (const std::size_t got = std::fread(chunk, 1, sizeof chunk, file.get())) {
        if (bytes.size() + got > maxBytes) throw CPdfError(PdfProblem::CannotRead, path + ": is too large");
        bytes.append(chunk, got);
    }
    if (std::ferror(file.get())) {
        throw SystemError(path, "cannot read", platform::StreamFailure().errorNumber, PdfProblem::CannotRead);
    }
    return bytes;
}

}  // namespace openhost
