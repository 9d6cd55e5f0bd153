#include "platform/LogFile.h"

#include "platform/FileHandles_win.h"

namespace platform {

FileResult CLogFile::Open(const std::string& path, bool append)
{
    Close();
    CHandle file;
    const auto opened = OpenForWriting(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS, file);
    if (!opened) return opened;
    if (!append) {
        if (const auto emptied = CutTo(file.Get(), 0); !emptied) return emptied;
    }
    m_file = COpenFile(NumberOf(file.Release()));
    return {};
}

FileResult CLogFile::Write(std::string_view bytes)
{
    return IsOpen() ? WriteAll(HandleOf(m_file.Get()), bytes) : FileResult{ERROR_INVALID_HANDLE};
}

std::string CLogFile::Read(std::size_t maxBytes)
{
    std::string bytes(IsOpen() ? maxBytes : 0, '\0');
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        DWORD count = 0;
        const auto part = static_cast<DWORD>(bytes.size() - filled < MAXLONG ? bytes.size() - filled : MAXLONG);
        if (!ReadFile(HandleOf(m_file.Get()), bytes.data() + filled, part, &count, nullptr) || count == 0) break;
        filled += count;
    }
    bytes.resize(filled);
    return bytes;
}

bool CLogFile::SeekBegin() { return IsOpen() && SetFilePointerEx(HandleOf(m_file.Get()), {}, nullptr, FILE_BEGIN); }

bool CLogFile::SeekEnd() { return IsOpen() && SetFilePointerEx(HandleOf(m_file.Get()), {}, nullptr, FILE_END); }

bool CLogFile::Truncate() { return IsOpen() && CutTo(HandleOf(m_file.Get()), 0).Ok(); }

bool CLogFile::Flush() { return IsOpen() && FlushFileBuffers(HandleOf(m_file.Get())); }

}  // namespace platform
