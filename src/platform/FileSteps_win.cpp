#include <array>

#include "platform/FileHandles_win.h"
#include "platform/FileSteps.h"
#include "platform/WideText_win.h"

namespace platform {
namespace {

FileStatus Told(const FileFacts& facts)
{
    FileStatus status{.kind = FileKind::Regular, .device = facts.device, .inode = facts.file, .links = facts.links};
    if (facts.isLink)
        status.kind = FileKind::Link;
    else if (!facts.isDisk)
        status.kind = FileKind::Other;
    else if (facts.IsFolder())
        status.kind = FileKind::Folder;
    status.keepsOthersOut = (facts.attributes & FILE_ATTRIBUTE_READONLY) != 0;
    return status;
}

FileResult Ask(const std::string& path, Links links, FileStatus& status)
{
    const auto wide = WidePath(path);
    status = {};
    // Told by the name, because opening a device may already act on it.
    if (IsDeviceName(wide) && AttributesOf(wide) == INVALID_FILE_ATTRIBUTES) return {};
    FileFacts facts;
    if (const auto asked = FactsOf(wide, links, facts); !asked) return asked;
    status = Told(facts);
    return {};
}

/// Read-only, for all: said here and not left to the system, so that it holds on every file system.
bool IsMarked(const std::wstring& path)
{
    const DWORD attributes = AttributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

FileResult Rename(const std::string& from, const std::string& to, DWORD flags)
{
    const auto wideFrom = WidePath(from), wideTo = WidePath(to);
    if (const auto allowed = CheckTargetName(wideTo); !allowed) return allowed;
    // On disk when the call comes back; never by copying, which could be cut off in the middle.
    flags |= MOVEFILE_WRITE_THROUGH;
    return Persistently([&] { return MoveFileExW(wideFrom.c_str(), wideTo.c_str(), flags); });
}

}  // namespace

FileResult StatusOf(const std::string& path, FileStatus& status) { return Ask(path, Links::Follow, status); }

FileResult StatusOfName(const std::string& path, FileStatus& status) { return Ask(path, Links::Keep, status); }

namespace {

FileResult AskIfThere(const std::string& path, Links links, FileStatus& status, bool& isThere)
{
    isThere = false;
    if (PretendedExistence(path) == false) return {};
    const auto asked = Ask(path, links, status);
    isThere = asked.Ok();
    const bool missing = ProblemOf(asked) == FileProblem::Missing || asked.errorNumber == ERROR_CANT_RESOLVE_FILENAME;
    return missing ? FileResult{} : asked;
}

}  // namespace

FileResult StatusIfThere(const std::string& path, FileStatus& status, bool& isThere)
{
    return AskIfThere(path, Links::Follow, status, isThere);
}

FileResult StatusOfNameIfThere(const std::string& path, FileStatus& status, bool& isThere)
{
    return AskIfThere(path, Links::Keep, status, isThere);
}

bool SameName(const std::string& a, const std::string& b)
{
    const auto nameA = FinalPath(OpenFor(WidePath(a), FILE_READ_ATTRIBUTES, FILE_FLAG_OPEN_REPARSE_POINT));
    const auto nameB = FinalPath(OpenFor(WidePath(b), FILE_READ_ATTRIBUTES, FILE_FLAG_OPEN_REPARSE_POINT));
    return !nameA.empty() && CompareStringOrdinal(nameA.data(), static_cast<int>(nameA.size()), nameB.data(),
                                                  static_cast<int>(nameB.size()), TRUE) == CSTR_EQUAL;
}

FileResult CheckWritable(const std::string& path)
{
    const auto wide = WidePath(path);
    if (IsMarked(wide)) return Failure(FileProblem::NoAccess);
    // The right to write that does not ask those who have the file open.
    return ResultOf(OpenFor(wide, FILE_WRITE_ATTRIBUTES, 0).Valid());
}

FileResult CheckRemovable(const std::string& path)
{
    const auto removable = ResultOf(OpenFor(WidePath(path), DELETE, FILE_FLAG_OPEN_REPARSE_POINT).Valid());
    // What a trial run pretends to have made is nowhere.
    if (!removable && PretendedExistence(path) == true) return CheckFolderOf(path);
    return removable;
}

FileResult CheckFolderOf(const std::string& path)
{
    const auto wide = WidePath(path);
    if (const auto allowed = CheckTargetName(wide); !allowed) return allowed;
    return ResultOf(OpenFor(FolderPrefix(wide), FILE_ADD_FILE, 0).Valid());
}

FileResult RenameReplacing(const std::string& from, const std::string& to)
{
    if (IsMarked(WidePath(to)) && !SameName(from, to)) return Failure(FileProblem::NoAccess);
    return Rename(from, to, MOVEFILE_REPLACE_EXISTING);
}

FileResult RenameExclusively(const std::string& from, const std::string& to) { return Rename(from, to, 0); }

bool IsOtherFileSystem(FileResult renamed) { return renamed.errorNumber == ERROR_NOT_SAME_DEVICE; }

FileResult RemoveName(const std::string& path)
{
    const auto wide = WidePath(path);
    if (IsMarked(wide)) return Failure(FileProblem::NoAccess);
    // A link to a folder is removed as folders are; a real one was refused before, and a full one is refused here.
    const bool asFolder = (AttributesOf(wide) & FILE_ATTRIBUTE_DIRECTORY) != 0 && IsLink(wide);
    return Persistently([&] { return asFolder ? RemoveDirectoryW(wide.c_str()) : DeleteFileW(wide.c_str()); });
}

FileResult RemoveMoved(const std::string& path)
{
    // Renaming does not mind the mark, so moving to another file system does not either.
    const auto wide = WidePath(path);
    const DWORD attributes = AttributesOf(wide);
    const bool marked = IsMarked(wide);
    if (marked) SetFileAttributesW(wide.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    const auto removed = RemoveName(path);
    if (!removed && marked) SetFileAttributesW(wide.c_str(), attributes);
    return removed;
}

FileResult FlushFolderOf(const std::string&) { return {}; }  // renaming waits for the disk

}  // namespace platform
