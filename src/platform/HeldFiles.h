#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Files.h"

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

/// A lock that keeps other processes out as long as this object, or any child that inherited its descriptor (or
/// handle), lives: so what a dead process has left running is not met by its successor. The file stays where it is,
/// and others may read and write it.
class CFileLock {
public:
    /// Never waits. Creates the file when it is missing. Fails: "in use" (FileProblem::InUse) when another
    /// holds the lock, and what the system says. A file system that has no locks keeps nobody out, and that is no
    /// failure.
    FileResult TryLock(const std::string& path);
    bool IsLocked() const { return m_file.IsOpen(); }
    /// For ChildOptions::inheritedDescriptors; -1 without a lock.
    long long Descriptor() const { return m_file.Get(); }

private:
    COpenFile m_file;
};

}  // namespace platform
