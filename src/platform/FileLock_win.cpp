#include "platform/FileLock.h"

#include "platform/FileHandles_win.h"

namespace platform {

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
