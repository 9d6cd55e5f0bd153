#include "platform/FileHandles_win.h"
#include "platform/HeldFiles.h"

namespace platform {

FileResult CAppendFile::Open(const std::string& path)
{
    Close();
    CHandle file;
    // The right to write everywhere is for cutting off; without it the file only grows.
    if (const auto opened = OpenForWriting(path, GENERIC_WRITE, kShareAll, OPEN_ALWAYS, file); !opened) return opened;
    LARGE_INTEGER size;
    if (!GetFileSizeEx(file.Get(), &size)) return LastFailure();
    if (size.QuadPart == 0 && !FlushFileBuffers(file.Get())) return LastFailure();
    m_file = COpenFile(NumberOf(file.Release()));
    return {};
}

FileResult CAppendFile::Write(std::string_view bytes)
{
    while (!bytes.empty()) {
        OVERLAPPED atEnd{};
        atEnd.Offset = atEnd.OffsetHigh = MAXDWORD;
        DWORD written = 0;
        const auto part = static_cast<DWORD>(bytes.size() < MAXLONG ? bytes.size() : MAXLONG);
        if (!WriteFile(HandleOf(m_file.Get()), bytes.data(), part, &written, &atEnd)) return LastFailure();
        if (written == 0) return {ERROR_DISK_FULL};
        bytes.remove_prefix(written);
    }
    return {};
}

FileResult CAppendFile::Flush() { return ResultOf(FlushFileBuffers(HandleOf(m_file.Get()))); }

FileResult CAppendFile::Truncate(std::uint64_t length) { return CutTo(HandleOf(m_file.Get()), length); }

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

// Not a lock of the system's, which ends with the process that took it. What two of us cannot have at once is the
// right to delete the file, which this asks for and does not share; everybody else shares it and may read and write.
FileResult CFileLock::TryLock(const std::string& path)
{
    *this = CFileLock();
    CHandle file;
    const auto taken =
        OpenForWriting(path, GENERIC_READ | DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS, file);
    if (taken) m_file = COpenFile(NumberOf(file.Release()));
    return taken;
}

}  // namespace platform
