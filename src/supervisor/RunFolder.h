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

/// The same folder for the same request. Holds a lock as long as it lives, and its workers hold it, too.
class CRunFolder {
public:
    /// Creates the folder and takes the lock, waiting a little for workers that are about to end.
    /// Fails with a sentence; empty when all is well.
    [[nodiscard]] std::string Open(const RunDescription& request);

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

/// What was done in earlier runs, packed, for whoever has to know it later. See docs/runs.md.
/// The packed runs lie in `folder`, each in a file "<end of the run>-<run>.jsonl.gz": manifest, then journal.
class CRunArchive {
public:
    explicit CRunArchive(std::string folder) : m_folder(std::move(folder)) {}

    /// Packs a run; an earlier pack of the same run goes. `run`: its id. Fails: a sentence, and nothing has changed.
    [[nodiscard]] std::string Keep(const std::string& run, const std::string& manifestPath,
                                   const std::string& journalPath) const;
    [[nodiscard]] bool Has(const std::string& run) const;
    /// Removes packs that are neither among the newest 20 nor younger than 30 days, and the plain plans of runs, in
    /// the folders beside them, that came to their end as long ago and left nothing that could be done again.
    void RemoveOld() const;

private:
    void RemoveOldPacks() const;
    void RemoveOldPlan(const std::string& folder) const;

    std::string m_folder;  // with its trailing separator
};
