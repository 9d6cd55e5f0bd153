#include "platform/AppendFile.h"

#include "platform/FileHandles_win.h"

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

}  // namespace platform
