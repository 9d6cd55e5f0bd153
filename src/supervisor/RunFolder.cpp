#include "supervisor/RunFolder.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <zlib.h>

#include "base/Names.h"
#include "base/Sha256.h"
#include "base/Text.h"
#include "platform/AtomicFile.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "supervisor/journal/JournalIndex.h"
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

namespace {

constexpr std::size_t kPacksKept = 20;
constexpr std::int64_t kDaysKept = 30;
constexpr std::int64_t kNanosecondsPerDay = std::int64_t{86'400} * 1'000'000'000;
constexpr std::string_view kEnding = ".jsonl.gz";
constexpr std::size_t kTimeLength = std::string_view("20251122T031643Z").size();

std::int64_t KeptSince() { return platform::NanosecondsSince1970() - kDaysKept * kNanosecondsPerDay; }

/// "20251122T031643Z"
std::string TimeName(std::int64_t nanoseconds)
{
    return ReplaceAll(ReplaceAll(platform::UtcText(nanoseconds), "-", ""), ":", "");
}

bool IsPack(const platform::FolderEntry& entry)
{
    return !entry.isFolder && entry.name.ends_with(kEnding) && entry.name.size() > kTimeLength + kEnding.size() &&
           entry.name[kTimeLength] == '-';
}

/// Whether it is the pack of this run.
bool IsPackOf(const platform::FolderEntry& entry, const std::string& run)
{
    return IsPack(entry) && entry.name.substr(kTimeLength + 1) == run + std::string(kEnding);
}

/// Writes bytes in the form of gzip.
class CPacker {
public:
    /// The file is borrowed.
    explicit CPacker(platform::CAtomicFile& file) : m_file(file)
    {
        constexpr int kGzip = 15 + 16, kMemoryLevel = 8;
        m_good = deflateInit2(&m_stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzip, kMemoryLevel,
                              Z_DEFAULT_STRATEGY) == Z_OK;
    }
    CPacker(const CPacker&) = delete;
    CPacker& operator=(const CPacker&) = delete;
    ~CPacker() { (void)deflateEnd(&m_stream); }

    bool Good() const { return m_good; }
    void Add(std::string_view bytes) { Run(bytes, Z_NO_FLUSH); }
    void Finish() { Run({}, Z_FINISH); }

private:
    void Run(std::string_view bytes, int flush)
    {
        std::array<char, 1 << 16> piece;
        // The interface of the library takes what it only reads as changeable.
        m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
        m_stream.avail_in = static_cast<uInt>(bytes.size());
        do {
            m_stream.next_out = reinterpret_cast<Bytef*>(piece.data());
            m_stream.avail_out = static_cast<uInt>(piece.size());
            const int answer = deflate(&m_stream, flush);
            m_good = m_good && answer != Z_STREAM_ERROR;
            m_file.Write(piece.data(), piece.size() - m_stream.avail_out);
        } while (m_good && m_stream.avail_out == 0);
    }

    platform::CAtomicFile& m_file;
    z_stream m_stream = {};
    bool m_good = false;
};

platform::FileResult AddFile(CPacker& packer, const std::string& path)
{
    return platform::ReadPieces(path, [&](std::string_view bytes) {
        packer.Add(bytes);
        return packer.Good();
    });
}

bool IsWhollySaved(const std::string& manifestPath, const std::string& journalPath)
{
    CManifestReader manifest;
    const auto header = manifest.Open(manifestPath);
    if (!header) return false;
    CDoneIndex done(header->total);
    CJournalIndex journal(done);
    const auto content = ReadJournal(journalPath, header->order.run, journal);
    if (!content || journal.Ending() != "finished" || header->unreadableFolders != 0) return false;
    for (int number = 1; number <= done.Total(); ++number)
        if (!done.IsDone(number) || IsRetried(done.At(number).outcome)) return false;
    return true;
}

}  // namespace

std::string CRunArchive::Keep(const std::string& run, const std::string& manifestPath,
                              const std::string& journalPath) const
{
    // It is made in the folder of the plan, whose lock makes that safe: who finds a half one there may remove it.
    const std::string made = FolderOf(manifestPath) + "packed" + std::string(kEnding);
    platform::CAtomicFile file(made, platform::Existing::Replace, journalPath);
    CPacker packer(file);
    platform::FileResult result = AddFile(packer, manifestPath);
    if (result) result = AddFile(packer, journalPath);
    packer.Finish();
    const std::string name = TimeName(platform::NanosecondsSince1970()) + '-' + run + std::string(kEnding);
    if (result && !packer.Good()) return "The run cannot be packed for later.";
    if (result) result = file.Commit();
    if (result) result = platform::MoveFile(made, m_folder + name, platform::Existing::Replace);
    if (!result)
        return "The run cannot be kept in " + m_folder + " for later (" + platform::ErrorText(result.errorNumber) +
               ").";
    for (const platform::FolderEntry& entry : platform::ListFolder(m_folder))
        if (IsPackOf(entry, run) && entry.name != name) (void)platform::DeleteFile(m_folder + entry.name);
    return {};
}

bool CRunArchive::Has(const std::string& run) const
{
    for (const platform::FolderEntry& entry : platform::ListFolder(m_folder))
        if (IsPackOf(entry, run)) return true;
    return false;
}

void CRunArchive::RemoveOld() const
{
    RemoveOldPacks();
    for (const platform::FolderEntry& entry : platform::ListFolder(m_folder))
        if (entry.isFolder) RemoveOldPlan(m_folder + entry.name + kSeparator);
}

void CRunArchive::RemoveOldPacks() const
{
    std::vector<std::string> packs;  // the oldest first, as their names begin with the time
    for (const platform::FolderEntry& entry : platform::ListFolder(m_folder))
        if (IsPack(entry)) packs.push_back(entry.name);
    const std::string since = TimeName(KeptSince());
    for (std::size_t place = 0; place + kPacksKept < packs.size() && packs[place] < since; ++place)
        (void)platform::DeleteFile(m_folder + packs[place]);
}

void CRunArchive::RemoveOldPlan(const std::string& folder) const
{
    const std::string manifest = folder + "manifest.jsonl", journal = folder + "journal.jsonl";
    const auto stamp = platform::StampOf(journal);
    if (!stamp || stamp->modifiedNanoseconds >= KeptSince()) return;
    platform::CFileLock lock;
    if (!lock.TryLock(folder + "lock") || !IsWhollySaved(manifest, journal)) return;
    // As when a run begins: a journal without a manifest is nobody's. The lock file stays, because somebody may be
    // about to lock it.
    (void)platform::DeleteFile(manifest);
    (void)platform::DeleteFile(journal);
}
