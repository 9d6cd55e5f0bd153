#include "platform/AppendFile.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/FileSteps.h"

namespace platform {

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
    m_file = COpenFile(file.Release());
    return {};
}

FileResult CAppendFile::Write(std::string_view bytes) { return WriteAll(static_cast<int>(m_file.Get()), bytes); }

FileResult CAppendFile::Flush() { return {calls::FlushData(static_cast<int>(m_file.Get())) == 0 ? 0 : errno}; }

FileResult CAppendFile::Truncate(std::uint64_t length)
{
    return {calls::Truncate(static_cast<int>(m_file.Get()), static_cast<off_t>(length)) == 0 ? 0 : errno};
}

}  // namespace platform
