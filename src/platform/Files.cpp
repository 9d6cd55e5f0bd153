#include "platform/Files.h"

#include "base/Overseer.h"
#include "base/PathNames.h"
#include "platform/FileProblem.h"
#include "platform/FileSteps.h"
#include "platform/WatchedActs.h"

namespace platform {

std::optional<std::string> ReadWholeFile(const std::string& path, std::uint64_t maxBytes, FileResult* result)
{
    // Its size is no more than a hint: files grow while they are read, and some systems report 0.
    std::string bytes;
    bool tooLarge = false;
    auto outcome = ReadPieces(path, [&](std::string_view piece) {
        tooLarge = bytes.size() + piece.size() > maxBytes;
        if (!tooLarge) bytes.append(piece);
        return !tooLarge;
    });
    if (tooLarge) outcome = Failure(FileProblem::TooLarge);
    if (result) *result = outcome;
    if (!outcome) return std::nullopt;
    return bytes;
}

bool NameIsLink(const std::string& path)
{
    FileStatus status;
    return PretendedExistence(path) != false && StatusOfName(path, status) && status.kind == FileKind::Link;
}

namespace {

FileResult CheckPlain(const std::string& path)
{
    FileStatus status;
    if (!StatusOfName(path, status)) return {};
    if (status.kind == FileKind::Regular || status.kind == FileKind::Link) return {};
    return Failure(status.kind == FileKind::Folder ? FileProblem::IsAFolder : FileProblem::NotARegularFile);
}

}  // namespace

FileResult WriteFileAtomically(const std::string& path, std::string_view bytes, Readers readers, Existing existing)
{
    if (existing == Existing::Fail && NameExists(path)) return Failure(FileProblem::Exists);
    if (const auto plain = CheckPlain(path); !plain) return plain;
    CTemporaryFile file;
    if (const auto created = file.CreateBeside(path, readers); !created) return created;
    if (const auto written = file.Write(bytes); !written) return written;
    if (const auto completed = file.Complete(); !completed) return completed;
    if (const auto put = file.PutInPlace(path, existing); !put) return put;
    (void)FlushFolderOf(path);  // in place it is, whatever the folder says
    return {};
}

bool IsFolderWritable(const std::string& folder)
{
    const auto path = UniqueUnderscore(WithTrailingSeparator(folder) + "__testfile.txt", NameExists);
    const CUnwatched ownFile;
    if (!CreateNewFile(path)) return false;
    (void)DeleteFile(path);
    return true;
}

}  // namespace platform
