// A private folder for temporary files.
#pragma once

#include "platform/FileLock.h"

#include <string>

/// A folder below the user's or the system's folder for temporary files: only this user can look into it, and it goes
/// with the object. What killed processes of this user have left there goes when the next one is made: as long as a
/// process lives, it holds the lock of its folder.
class CScratchFolder {
public:
    CScratchFolder();
    CScratchFolder(const CScratchFolder&) = delete;
    CScratchFolder& operator=(const CScratchFolder&) = delete;
    ~CScratchFolder();
    /// Empty when there is none.
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
    platform::CFileLock m_lock;
};
