#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/Overseer.h"
#include "platform/Files.h"

// What the file services that are the same on every system are made of. Each system has its own; not for callers
// outside this folder.
namespace platform {

enum class FileKind { Regular, Folder, Link, Other };

struct FileStatus {
    FileKind kind = FileKind::Other;
    std::uint64_t device = 0, inode = 0, links = 0;
    bool keepsOthersOut = false;  ///< marked so that the system lets nobody replace or delete it
    bool SameFileAs(const FileStatus& other) const { return device == other.device && inode == other.inode; }
};

/// What stands at the path, symbolic links followed.
FileResult StatusOf(const std::string& path, FileStatus& status);
/// The same, or a symbolic link itself.
FileResult StatusOfName(const std::string& path, FileStatus& status);
/// As StatusOf and StatusOfName. Fail when it cannot be told: which is not the same as nothing.
FileResult StatusIfThere(const std::string& path, FileStatus& status, bool& isThere);
FileResult StatusOfNameIfThere(const std::string& path, FileStatus& status, bool& isThere);

/// Whether the two paths are one name of one folder, on different ways or in different letter cases.
bool SameName(const std::string& a, const std::string& b);

/// Whether the user may write into the file that stands there.
FileResult CheckWritable(const std::string& path);
/// As far as it can be asked: whether the file may be taken away, or given another name.
FileResult CheckRemovable(const std::string& path);

/// Renames within a file system, and replaces what is there.
FileResult RenameReplacing(const std::string& from, const std::string& to);
/// Renames without ever replacing.
FileResult RenameExclusively(const std::string& from, const std::string& to);
/// What these two fail with when the names are of two file systems.
bool IsOtherFileSystem(FileResult renamed);
/// Removes a file or link.
FileResult RemoveName(const std::string& path);
/// The same for one that stands elsewhere by now; the source stays when this fails.
FileResult RemoveMoved(const std::string& path);
/// Makes renames in the folder of `path` last. Fails only when the disk does: not every system can flush folders.
FileResult FlushFolderOf(const std::string& path);

/// A second name for the file, or for the symbolic link, itself; its content is on disk when this comes back.
FileResult LinkFile(const std::string& from, const std::string& to);
/// Another symbolic link that leads to the same place.
FileResult CopyLink(const std::string& from, const std::string& to);

// How the file services of this folder ask the overseer; not for callers outside.

/// Nothing when the act is to be done now; otherwise its result, because it is refused or only pretended.
std::optional<FileResult> AskOverseer(COverseer::Act act, const std::string& file, const std::string& target);

/// During a trial run nothing is created, only checked.
bool Pretending();
/// What pretended acts have made of the path; nothing when the disk tells.
std::optional<bool> PretendedExistence(const std::string& path);

/// What the system would say to the act of putting a file into the folder of `path`, as far as that can be asked.
FileResult CheckFolderOf(const std::string& path);

}  // namespace platform
