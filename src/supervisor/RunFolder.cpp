#include "supervisor/RunFolder.h"

#include "base/PathNames.h"
#include "base/Sha256.h"
#include "platform/FileProblem.h"
#include "platform/PrivateFolder.h"
#include "platform/TemporaryNames.h"
#include "supervisor/Temporaries.h"
#include "supervisor/WorkerFolder.h"

#include <chrono>
#include <thread>

namespace {

constexpr std::size_t kKeyLength = 32;
constexpr std::chrono::milliseconds kFirstLockPause{5}, kLongestLockPause{1000};

void AddPart(CSha256& digest, const std::string& part)
{
    const std::string length = std::to_string(part.size()) + ':';
    digest.Add(length.data(), length.size());
    digest.Add(part.data(), part.size());
}

/// Sequence, inputs, output, final action and destination.
std::string KeyOf(const RunDescription& request)
{
    CSha256 digest;
    for (const std::string& path : {request.sequence, request.outputFolder, request.destination})
        AddPart(digest, platform::ResolvedPath(path));
    AddPart(digest, std::string(FactsOf(request.finalAction).word));
    for (const std::string& input : request.inputs) AddPart(digest, platform::ResolvedPath(input));
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

std::string CRunFolder::Open(const RunDescription& request)
{
    m_path = UserPaths().settingsFolder + "Runs" + kSeparator + KeyOf(request);
    if (const auto made = platform::CreateFolders(m_path); !made)
        return "The folder " + m_path + " cannot be made (" + platform::ErrorText(made.errorNumber) + ").";
    (void)platform::MakeFolderPrivate(m_path);  // one that an earlier version has made, too
    std::string problem = TakeLock(m_lock, m_path + kSeparator + "lock");
    // Who had the lock before may have been killed over a manifest.
    if (problem.empty()) RemoveTemporaries({m_path}, platform::TemporaryPrefix(""));
    return problem;
}

std::string CRunFolder::ManifestPath() const { return m_path + kSeparator + "manifest.jsonl"; }

std::string CRunFolder::JournalPath() const { return m_path + kSeparator + "journal.jsonl"; }

void CRunFolder::RemoveWorkerFolders() const
{
    for (const platform::FolderEntry& entry : platform::ListFolder(m_path))
        if (entry.isFolder && entry.name.starts_with("worker-")) RemoveFolder(m_path + kSeparator + entry.name);
}
