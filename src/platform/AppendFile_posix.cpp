#include "platform/AppendFile.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/FileSteps.h"

namespace platform {

CAppendFile::CAppendFile(CAppendFile&& other) noexcept : m_file(std::exchange(other.m_file, kNone)) {}

CAppendFile& CAppendFile::operator=(CAppendFile&& other) noexcept
{
    std::swap(m_file, other.m_file);
    return *this;
}

CAppendFile::~CAppendFile() { Close(); }

FileResult CAppendFile::Open(const std::string& path)
{
    constexpr unsigned kOwnerOnly = 0600;
    Close();
    CDescriptor file(calls::Open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, kOwnerOnly));
    if (!file.Valid()) return {errno};
    struct stat status;
    if (calls::StatusOf(file.Get(), status) != 0) return {errno};
    if (!S_ISREG(status.st_mode)) return {EINVAL};
    if (status.st_size == 0) {
        if (const auto flushed = FlushFolderOf(path); !flushed) return flushed;
    }
    m_file = file.Release();
    return {};
}

FileResult CAppendFile::Write(std::string_view bytes) { return WriteAll(static_cast<int>(m_file), bytes); }

FileResult CAppendFile::Flush() { return {calls::FlushData(static_cast<int>(m_file)) == 0 ? 0 : errno}; }

FileResult CAppendFile::Truncate(std::uint64_t length)
{
    return {calls::Truncate(static_cast<int>(m_file), static_cast<off_t>(length)) == 0 ? 0 : errno};
}

void CAppendFile::Close()
{
    if (IsOpen()) calls::Close(static_cast<int>(std::exchange(m_file, kNone)));
}

}  // namespace platform
