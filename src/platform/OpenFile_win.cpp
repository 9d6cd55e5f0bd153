#include "platform/OpenFile.h"

#include "platform/FileHandles_win.h"

namespace platform {

void COpenFile::Close() noexcept
{
    if (IsOpen()) CloseHandle(HandleOf(std::exchange(m_file, kNone)));
}

}  // namespace platform
