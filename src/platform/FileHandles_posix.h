#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <utility>

#include "platform/Files.h"

// Shared by the file services of this folder; not for callers outside.
namespace platform {

/// Owns a file descriptor, or none.
class CDescriptor {
public:
    explicit CDescriptor(int adopted = -1) noexcept : m_fd(adopted) {}
    CDescriptor(CDescriptor&& other) noexcept : m_fd(other.Release()) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;
    ~CDescriptor();

    int Get() const { return m_fd; }
    bool Valid() const { return m_fd >= 0; }
    int Release() noexcept { return std::exchange(m_fd, -1); }

private:
    int m_fd;
};

/// A file under a name of its own in some folder; removed again unless it was put in a place.
class CTemporaryFile {
public:
    CTemporaryFile() = default;
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;
    ~CTemporaryFile();

    /// Creates the file in the folder of `target`, with these permission bits less the process's mask.
    FileResult CreateBeside(const std::string& target, unsigned mode);
    int Descriptor() const { return m_descriptor.Get(); }
    /// Empty as long as there is no file.
    const std::string& Path() const { return m_path; }
    /// Flushes it to disk and closes it.
    FileResult Complete();
    /// Gives the completed file its final name.
    FileResult PutInPlace(const std::string& target, Existing existing);

private:
    CDescriptor m_descriptor;
    std::string m_path;  // empty when there is nothing to remove
};

/// Opens a regular file for reading without ever waiting; `status` tells what was opened.
FileResult OpenRegular(const std::string& path, CDescriptor& file, struct stat& status);
/// What stands at the path, links followed. Fails when that cannot be told: which is not the same as nothing.
FileResult StatusIfThere(const std::string& path, struct stat& status, bool& isThere);
FileResult WriteAll(int descriptor, std::string_view bytes);
FileResult FlushDescriptor(int descriptor);
/// Makes renames in the folder of `path` last. Fails only when the disk does: not every system can flush folders.
FileResult FlushFolderOf(const std::string& path);

/// Renames without ever replacing, also where the file system lacks the call for it.
FileResult RenameExclusively(const std::string& from, const std::string& to);
/// The same by a second name for the file, where such names exist.
FileResult RenameByLink(const std::string& from, const std::string& to);
/// The same where neither is to be had: an empty file of our own claims the name, then the real one replaces it.
FileResult RenameOverClaim(const std::string& from, const std::string& to);

/// Where the symbolic links that begin at `path` end, whether or not something is there: a file put in that place
/// replaces what they lead to and keeps them. Fails: "too many links".
FileResult FollowLinks(const std::string& path, std::string& end);

/// The folder part of a path with its separator; empty when there is none.
std::string FolderPrefix(const std::string& path);

}  // namespace platform
