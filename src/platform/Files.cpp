#include "platform/Files.h"

#include <algorithm>

#include "base/Names.h"
#include "base/Overseer.h"
#include "platform/FileSteps.h"
#include "platform/TemporaryFile.h"

namespace platform {

FileProblem ProblemOf(FileResult result)
{
    if (result) return FileProblem::None;
    const auto row = std::ranges::find(ErrorRows(), result.errorNumber, &ErrorRow::number);
    return row == ErrorRows().end() ? FileProblem::Other : row->problem;
}

FileResult Failure(FileProblem problem)
{
    if (problem == FileProblem::None) return {};
    return {std::ranges::find(ErrorRows(), problem, &ErrorRow::problem)->number};
}

bool NameExists(const std::string& path) { return LookUpName(path).Ok(); }

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

namespace {

// As far as it can be told without making the copy.
FileResult CheckCopying(const std::string& from, const std::string& target)
{
    const bool pretended = PretendedExistence(from) == true;
    if (const auto readable = pretended ? FileResult{} : CheckReadable(from); !readable) return readable;
    return CheckFolderOf(target);
}

/// `replaced`: the rights of a file that the copy will replace, which it must not exceed.
FileResult CopyTo(const std::string& from, const std::string& target, Existing existing,
                  const CFileRights* replaced = nullptr)
{
    CTemporaryFile copy;
    const auto made = Pretending() ? CheckCopying(from, target) : copy.CopyBeside(from, target, {.limit = replaced});
    if (!made) return made;
    const auto answer = AskOverseer(COverseer::Act::Put, Pretending() ? from : copy.Path(), target);
    if (answer) return *answer;
    const auto put = copy.PutInPlace(target, existing);
    // The copy is in place by now; a folder that cannot be flushed is no failure.
    if (put) (void)FlushFolderOf(target);
    return put;
}

struct Target {
    bool isThere = false;
    FileStatus status = {};  // of a link itself
};

// What stands at the target and forbids to replace it. Devices and pipes are never replaced by a file. A link is, and
// it is never followed: who may write into the folder could make it lead to anybody's file.
FileResult CheckReplaceable(const std::string& to, Target& target)
{
    if (const auto asked = StatusOfNameIfThere(to, target.status, target.isThere); !asked) return asked;
    if (!target.isThere || target.status.kind == FileKind::Regular || target.status.kind == FileKind::Link) return {};
    return Failure(target.status.kind == FileKind::Folder ? FileProblem::IsAFolder : FileProblem::NotARegularFile);
}

FileResult CheckMarks(const Target& target)
{
    return Failure(target.isThere && target.status.keepsOthersOut ? FileProblem::NoAccess : FileProblem::None);
}

FileResult CheckFree(const std::string& to)
{
    Target target;
    const auto replaceable = CheckReplaceable(to, target);
    if (!replaceable && ProblemOf(replaceable) != FileProblem::NotARegularFile) return replaceable;
    return Failure(NameExists(to) ? FileProblem::Exists : FileProblem::None);
}

void FlushFoldersOf(const std::string& from, const std::string& to)
{
    (void)FlushFolderOf(to);
    (void)FlushFolderOf(from);
}

/// Whether the file is still what it was at the time of the stamp.
FileResult CheckUnchanged(const std::string& path, const FileStamp& stamp)
{
    const auto now = StampOf(path);
    const bool same = now && stamp.device == now->device && stamp.inode == now->inode && stamp.size == now->size &&
                      stamp.modifiedNanoseconds == now->modifiedNanoseconds;
    return Failure(same ? FileProblem::None : FileProblem::InUse);
}

FileResult MoveAcross(const std::string& from, const std::string& to, Existing existing)
{
    // Asked before the target is touched.
    if (const auto removable = CheckRemovable(from); !removable) return removable;
    const auto stamp = StampOf(from);
    if (!stamp) return Failure(FileProblem::Missing);
    CTemporaryFile copy;
    if (const auto made = copy.CopyBeside(from, to, {.withOwner = true}); !made) return made;
    if (const auto put = copy.PutInPlace(to, existing); !put) return put;
    auto outcome = FlushFolderOf(to);
    // A copy takes its time, in which somebody may have put a new version there.
    if (outcome) outcome = CheckUnchanged(from, *stamp);
    if (outcome) outcome = RemoveMoved(from);
    if (!outcome && existing == Existing::Fail) (void)RemoveMoved(to);
    return outcome;
}

/// After all checks: asks, and does it.
FileResult MoveNow(const std::string& from, const std::string& to, Existing existing)
{
    if (Pretending()) {
        if (const auto removable = CheckRemovable(from); !removable) return removable;
        if (const auto writable = CheckFolderOf(to); !writable) return writable;
    }
    if (const auto answer = AskOverseer(COverseer::Act::Move, from, to)) return *answer;
    auto moved = existing == Existing::Fail ? RenameExclusively(from, to) : RenameReplacing(from, to);
    if (IsOtherFileSystem(moved)) moved = MoveAcross(from, to, existing);
    if (moved) FlushFoldersOf(from, to);
    return moved;
}

// Two names of one file. Renaming would succeed and leave both, so the old name is removed here; but only when it is
// certainly another name.
FileResult MoveOntoOtherName(const std::string& from, const std::string& to, const FileStatus& source)
{
    if (SameName(from, to)) return RenameReplacing(from, to);
    if (source.links < 2) return {};
    if (const auto answer = AskOverseer(COverseer::Act::Move, from, to)) return *answer;
    if (const auto removed = RemoveName(from); !removed) return removed;
    FlushFoldersOf(from, to);
    return {};
}

// A link moved onto the file that it leads to would replace the only content by a link to itself.
FileResult CheckNotBehindLink(const std::string& from, const FileStatus& source, const Target& target)
{
    if (source.kind != FileKind::Link || !target.isThere) return {};
    FileStatus content;
    bool isThere = false;
    if (const auto asked = StatusIfThere(from, content, isThere); !asked) return asked;
    const bool behind = isThere && content.SameFileAs(target.status);
    return Failure(behind ? FileProblem::NotARegularFile : FileProblem::None);
}

FileResult MoveReplacing(const std::string& from, const std::string& to, const FileStatus& source)
{
    Target target;
    if (const auto replaceable = CheckReplaceable(to, target); !replaceable) return replaceable;
    if (target.isThere && source.SameFileAs(target.status)) return MoveOntoOtherName(from, to, source);
    if (const auto allowed = CheckMarks(target); !allowed) return allowed;
    if (const auto allowed = CheckNotBehindLink(from, source, target); !allowed) return allowed;
    return MoveNow(from, to, Existing::Replace);
}

/// What is to be moved or deleted, which may exist in a trial run only.
FileResult CheckSource(const std::string& path, FileStatus& source)
{
    const auto pretended = PretendedExistence(path);
    if (pretended == false) return Failure(FileProblem::Missing);
    const auto asked = StatusOfName(path, source);
    if (!asked && pretended != true) return asked;
    return Failure(asked && source.kind == FileKind::Folder ? FileProblem::IsAFolder : FileProblem::None);
}

}  // namespace

FileResult CopyFile(const std::string& from, const std::string& to, Existing existing)
{
    if (existing == Existing::Fail) {
        const auto free = CheckFree(to);
        return free ? CopyTo(from, to, existing) : free;
    }
    FileStatus source;
    const bool onDisk = PretendedExistence(from) != true;
    if (onDisk) {
        if (const auto asked = StatusOf(from, source); !asked) return asked;
    }
    Target target;
    if (const auto replaceable = CheckReplaceable(to, target); !replaceable) return replaceable;
    if (onDisk && target.isThere && source.SameFileAs(target.status)) return Failure(FileProblem::NotARegularFile);
    if (const auto allowed = CheckMarks(target); !allowed) return allowed;
    CFileRights rights;
    const bool replaces = target.isThere && target.status.kind == FileKind::Regular;
    if (replaces) {
        if (const auto read = rights.ReadLimit(to); !read) return read;
    }
    return CopyTo(from, to, existing, replaces ? &rights : nullptr);
}

FileResult MoveFile(const std::string& from, const std::string& to, Existing existing)
{
    FileStatus source;
    if (const auto movable = CheckSource(from, source); !movable) return movable;
    if (existing == Existing::Replace) return MoveReplacing(from, to, source);
    const auto free = CheckFree(to);
    return free ? MoveNow(from, to, existing) : free;
}

FileResult DeleteFile(const std::string& path)
{
    FileStatus status;
    if (const auto deletable = CheckSource(path, status); !deletable) return deletable;
    if (status.keepsOthersOut) return Failure(FileProblem::NoAccess);
    if (Pretending()) {
        if (const auto removable = CheckRemovable(path); !removable) return removable;
    }
    if (const auto answer = AskOverseer(COverseer::Act::Delete, path, {})) return *answer;
    if (const auto removed = RemoveName(path); !removed) return removed;
    (void)FlushFolderOf(path);
    return {};
}

}  // namespace platform
