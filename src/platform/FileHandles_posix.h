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

/// Opens a regular file for reading without ever waiting; `status` tells what was opened.
FileResult OpenRegular(const std::string& path, CDescriptor& file, struct stat& status);
FileResult WriteAll(int descriptor, std::string_view bytes);
FileResult FlushDescriptor(int descriptor);

/// RenameExclusively by a second name for the file, where such names exist.
FileResult RenameByLink(const std::string& from, const std::string& to);
/// The same where neither is to be had: an empty file of our own claims the name, then the real one replaces it.
FileResult RenameOverClaim(const std::string& from, const std::string& to);

/// The folder part of a path with its separator; empty when there is none.
std::string FolderPrefix(const std::string& path);

}  // namespace platform
