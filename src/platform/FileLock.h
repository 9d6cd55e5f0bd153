#pragma once

#include <string>

#include "platform/Files.h"
#include "platform/OpenFile.h"

namespace platform {

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
