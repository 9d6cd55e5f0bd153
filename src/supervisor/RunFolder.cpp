#include "supervisor/RunFolder.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <thread>

#include "base/Names.h"
#include "base/Sha256.h"
#include "platform/AtomicFile.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "supervisor/journal/Journal.h"
#include "supervisor/journal/Manifest.h"
#include "supervisor/plan/Planning.h"
#include "supervisor/resume/CleanUp.h"
#include "supervisor/workers/Worker.h"

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
    // Whoever sweeps just now may take a folder whose lock is there and not held yet. He removes the folder before he
    // lets go of the lock, which then has no name any more.
    for (int attempt = 0; attempt < kAttempts && m_path.empty(); ++attempt) {
        const std::string path = parent + kSeparator + kPrefix + NewRunId();
        if (!platform::CreatePrivateFolder(path)) return;
        if (m_lock.TryLock(LockOf(path)) && platform::NameExists(LockOf(path))) m_path = path;
    }
}

CScratchFolder::~CScratchFolder()
{
    if (m_path.empty()) return;
    m_lock = platform::CFileLock();
    RemoveFolder(m_path);
}

namespace {

constexpr std::size_t kKeyLength = 32;
constexpr std::chrono::milliseconds kFirstLockPause{5}, kLongestLockPause{1000};

void AddPart(CSha256& digest, const std::string& part)
{
    const std::string length = std::to_string(part.size()) + ':';
    digest.Add(length.data(), length.size());
    digest.Add(part.data(), part.size());
}

/// Work, inputs, output, final action and destination.
std::string KeyOf(const RunDescription& request)
{
    CSha256 digest;
    for (const WorkFile& file : request.work.files) AddPart(digest, platform::ResolvedPath(file.path));
    for (const std::string& path : {request.outputFolder, request.destination})
        AddPart(digest, platform::ResolvedPath(path));
    AddPart(digest, std::string(FactsOf(request.finalAction).word));
    for (const std::string& input : request.inputs) AddPart(digest, platform::ResolvedPath(input));
    if (const std::string identity = WorkIdentity(request.work); !identity.empty()) AddPart(digest, identity);
    return digest.Digest().substr(0, kKeyLength);
}

}  // namespace

std::string TakeLock(platform::CFileLock& lock, const std::string& path)
{
    platform::FileResult taken;
    for (auto pause = kFirstLockPause; pause <= kLongestLockPause; pause *= 2) {
        taken = lock.TryLock(path);
        if (taken) return {};
        if (platform::ProblemOf(taken) != platform::FileProblem::InUse) break;
        std::this_thread::sleep_for(pause);
    }
    if (platform::ProblemOf(taken) == platform::FileProblem::InUse)
        return "The same run is being done by another process (" + path + " is locked).";
    return "The file " + path + " cannot be locked (" + platform::ErrorText(taken.errorNumber) + ").";
}

std::string RunsFolder() { return UserPaths().settingsFolder + "Runs" + kSeparator; }

std::string CRunFolder::Open(const RunDescription& request) { return OpenAt(RunsFolder() + KeyOf(request)); }

std::string CRunFolder::OpenAt(const std::string& folder)
{
    m_path = folder;
    if (const auto made = platform::CreateFolders(m_path); !made)
        return "The folder " + m_path + " cannot be made (" + platform::ErrorText(made.errorNumber) + ").";
    (void)platform::MakeFolderPrivate(m_path);  // one that an earlier version has made, too
    std::string problem = TakeLock(m_lock, m_path + kSeparator + "lock");
    // Who had the lock before may have been killed over a manifest.
    if (problem.empty()) RemoveTemporaries({m_path}, platform::TemporaryPrefix(""));
    return problem;
}

std::string CRunFolder::ManifestPath() const { return ManifestIn(m_path); }

std::string CRunFolder::JournalPath() const { return JournalIn(m_path); }

void CRunFolder::RemoveWorkerFolders() const
{
    for (const platform::FolderEntry& entry : platform::ListFolder(m_path))
        if (entry.isFolder && entry.name.starts_with("worker-")) RemoveFolder(m_path + kSeparator + entry.name);
}
