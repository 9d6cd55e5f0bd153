#include "supervisor/ScratchFolder.h"

#include "base/PathNames.h"
#include "platform/Clock.h"
#include "platform/PrivateFolder.h"
#include "platform/StandardPath.h"
#include "supervisor/Planning.h"
#include "supervisor/WorkerFolder.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

namespace {

constexpr char kPrefix[] = "ferrule-scratch-";
constexpr int kAttempts = 10;
constexpr std::int64_t kGraceNanoseconds = 60'000'000'000;

std::string LockOf(const std::string& folder) { return folder + kSeparator + "lock"; }

/// A folder is made a moment before its lock; one that never got it had no time to hold anything.
bool WasForgotten(const std::string& folder)
{
    const auto stamp = platform::StampOf(folder);
    return stamp && stamp->modifiedNanoseconds < platform::NanosecondsSince1970() - kGraceNanoseconds;
}

void RemoveUnlessInUse(const std::string& folder)
{
    if (!platform::NameExists(LockOf(folder)) && !WasForgotten(folder)) return;
    platform::CFileLock lock;
    if (!lock.TryLock(LockOf(folder))) return;
    // Whoever is about to lock it must find it locked until it is gone. Not every system removes a locked file.
    RemoveFolder(folder);
    lock = platform::CFileLock();
    RemoveFolder(folder);
}

/// Names of other users are passed over: their folders are theirs, and a link may lead anywhere.
void Sweep(const std::string& parent)
{
    for (const platform::FolderEntry& entry : platform::ListFolder(parent)) {
        const std::string path = parent + kSeparator + entry.name;
        if (entry.name.starts_with(kPrefix) && platform::IsOwnFolder(path)) RemoveUnlessInUse(path);
    }
}

}  // namespace

CScratchFolder::CScratchFolder()
{
    std::error_code error;
    const std::string parent = platform::TextOf(std::filesystem::temp_directory_path(error));
    if (error) return;
    Sweep(parent);
    // Whoever sweeps just now may take a folder whose lock is there and not held yet.
    for (int attempt = 0; attempt < kAttempts && m_path.empty(); ++attempt) {
        const std::string path = parent + kSeparator + kPrefix + NewRunId();
        if (!platform::CreatePrivateFolder(path)) return;
        if (m_lock.TryLock(LockOf(path))) m_path = path;
    }
}

CScratchFolder::~CScratchFolder()
{
    if (m_path.empty()) return;
    m_lock = platform::CFileLock();
    RemoveFolder(m_path);
}
