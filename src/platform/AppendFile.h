#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Files.h"
#include "platform/OpenFile.h"

namespace platform {

/// A file that only grows at its end, except where it is cut off on purpose: for journals. Readable and writable for
/// its owner only. The destructor closes it.
class CAppendFile {
public:
    /// Opens the file, or creates it so that its name outlasts a power cut. Closes another one before.
    FileResult Open(const std::string& path);
    bool IsOpen() const { return m_file.IsOpen(); }
    /// Fails: some of the bytes may have been written; see Truncate.
    FileResult Write(std::string_view bytes);
    /// When this comes back without error, everything written so far is on disk.
    FileResult Flush();
    /// Cuts off what is behind `length`.
    FileResult Truncate(std::uint64_t length);
    void Close() { m_file.Close(); }

private:
    COpenFile m_file;
};

}  // namespace platform
