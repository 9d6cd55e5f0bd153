// Where a run keeps its plan and its journal, and what was done in earlier runs, packed. See docs/runs.md.
#pragma once

#include <string>

#include "platform/HeldFiles.h"
#include "supervisor/RunOptions.h"

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

/// Where this user's runs have their folders, with the trailing separator.
[[nodiscard]] std::string RunsFolder();

/// The same folder for the same request. Holds a lock as long as it lives, and its workers hold it, too.
class CRunFolder {
public:
    /// Creates the folder and takes the lock, waiting a little for workers that are about to end.
    /// Fails with a sentence; empty when all is well.
    [[nodiscard]] std::string Open(const RunDescription& request);
    /// The same with a folder that is chosen by the caller.
    [[nodiscard]] std::string OpenAt(const std::string& folder);

    const std::string& Path() const { return m_path; }
    std::string ManifestPath() const;
    std::string JournalPath() const;
    /// When no worker is left; what they logged is in the journal.
    void RemoveWorkerFolders() const;
    long long LockDescriptor() const { return m_lock.Descriptor(); }

private:
    std::string m_path;
    platform::CFileLock m_lock;
};

/// Takes the lock on a file that is created when missing. The sentence of a failure, or nothing.
[[nodiscard]] std::string TakeLock(platform::CFileLock& lock, const std::string& path);
