#pragma once

#include <string>

#include "platform/Files.h"

namespace platform {

/// A lock that keeps other processes out as long as this object, or any child that inherited its descriptor (or
/// handle), lives: so what a dead process has left running is not met by its successor. The file stays where it is,
/// and others may read and write it.
class CFileLock {
public:
    CFileLock() = default;
    CFileLock(CFileLock&& other) noexcept;
    CFileLock& operator=(CFileLock&& other) noexcept;
    CFileLock(const CFileLock&) = delete;
    CFileLock& operator=(const CFileLock&) = delete;
    ~CFileLock();

    /// Never waits. Creates the file when it is missing. Fails: "in use" (FileProblem::InUse) when another
    /// holds the lock, and what the system says. A file system that has no locks keeps nobody out, and that is no
    /// failure.
    FileResult TryLock(const std::string& path);
    bool IsLocked() const { return m_file != kNone; }
    /// For ChildOptions::inheritedDescriptors; -1 without a lock.
    long long Descriptor() const { return m_file; }

private:
    static constexpr long long kNone = -1;
    long long m_file = kNone;  // descriptor or handle
};

}  // namespace platform
