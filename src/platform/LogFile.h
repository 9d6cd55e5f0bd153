#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Files.h"
#include "platform/OpenFile.h"

namespace platform {

/// A file that one writer holds open for reading and writing while others may only read.
///
/// Owns the open file; closing or destroying it ends the claim.
class CLogFile {
public:
    /// Opens or creates the file; without `append` it is emptied, once no other writer holds it.
    /// Fails: closed, the file untouched; also when another object or process has it open as a log.
    FileResult Open(const std::string& path, bool append);
    bool IsOpen() const { return m_file.IsOpen(); }
    /// Writes at the current position, normally with one system call.
    FileResult Write(std::string_view bytes);
    /// Up to `maxBytes` from the current position; empty at the end and on failure.
    std::string Read(std::size_t maxBytes);
    bool SeekBegin();
    bool SeekEnd();
    /// Cuts the file to length 0; the position stays.
    bool Truncate();
    bool Flush();
    void Close() { m_file.Close(); }

private:
    COpenFile m_file;
};

}  // namespace platform
