#include "platform/OpenFile.h"

#include "platform/FileCalls_posix.h"

namespace platform {

void COpenFile::Close() noexcept
{
    if (IsOpen()) calls::Close(static_cast<int>(std::exchange(m_file, kNone)));
}

}  // namespace platform
