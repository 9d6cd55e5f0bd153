#include "platform/FileLock.h"

#include "platform/FileHandles_win.h"

namespace platform {

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
