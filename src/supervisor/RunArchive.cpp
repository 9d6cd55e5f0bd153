#include "supervisor/RunArchive.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include <zlib.h>

#include "base/Names.h"
#include "base/Text.h"
#include "platform/AtomicFile.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/HeldFiles.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/journal/Manifest.h"

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

bool IsPackName(const std::string& name)
{
    return name.ends_with(kEnding) && name.size() > kTimeLength + kEnding.size() && name[kTimeLength] == '-';
}

bool IsPack(const platform::FolderEntry& entry) { return !entry.isFolder && IsPackName(entry.name); }

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

/// Reads bytes in the form of gzip.
class CUnpacker {
public:
    CUnpacker() { m_good = inflateInit2(&m_stream, kGzip) == Z_OK; }
    CUnpacker(const CUnpacker&) = delete;
    CUnpacker& operator=(const CUnpacker&) = delete;
    ~CUnpacker() { (void)inflateEnd(&m_stream); }

    /// False when the bytes are damaged.
    bool Add(std::string_view packed, const std::function<void(std::string_view bytes)>& take)
    {
        std::array<char, 1 << 16> piece;
        m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
        m_stream.avail_in = static_cast<uInt>(packed.size());
        do {
            m_stream.next_out = reinterpret_cast<Bytef*>(piece.data());
            m_stream.avail_out = static_cast<uInt>(piece.size());
            const int answer = inflate(&m_stream, Z_NO_FLUSH);
            m_complete = answer == Z_STREAM_END;
            m_good = m_good && (answer == Z_OK || answer == Z_BUF_ERROR || m_complete);
            take({piece.data(), piece.size() - m_stream.avail_out});
        } while (m_good && !m_complete && m_stream.avail_out == 0);
        return m_good;
    }
    bool IsComplete() const { return m_good && m_complete; }

private:
    static constexpr int kGzip = 15 + 16;
    z_stream m_stream = {};
    bool m_good = false, m_complete = false;
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

bool CRunArchive::IsPack(const std::string& path) { return IsPackName(FileName(path)); }

std::string CRunArchive::Unpack(const std::string& pack, const std::string& journalPath)
{
    constexpr std::string_view kJournal = "\n{\"ferrule\":\"journal\"";
    const std::string unreadable = "The packed run " + pack + " cannot be read.";
    platform::CAtomicFile file(journalPath, platform::Existing::Replace);
    CUnpacker unpacker;
    std::string before;  // until the journal begins
    bool inJournal = false;
    const platform::FileResult read = platform::ReadPieces(pack, [&](std::string_view packed) {
        return unpacker.Add(packed, [&](std::string_view bytes) {
            if (inJournal) return file.Write(bytes.data(), bytes.size());
            before += bytes;
            const std::size_t begin = before.find(kJournal);
            inJournal = begin != std::string::npos;
            if (inJournal) return file.Write(before.data() + begin + 1, before.size() - begin - 1);
            before.erase(0, before.size() - std::min(before.size(), kJournal.size()));
        });
    });
    if (!read || !unpacker.IsComplete() || !inJournal) return unreadable;
    const platform::FileResult written = file.Commit();
    return written
               ? std::string()
               : "The packed run " + pack + " cannot be unpacked (" + platform::ErrorText(written.errorNumber) + ").";
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
    RemoveOldUndos();
    for (const platform::FolderEntry& entry : platform::ListFolder(m_folder))
        if (entry.isFolder) RemoveOldPlan(m_folder + entry.name + kSeparator);
}

void CRunArchive::RemoveOldPacks() const
{
    std::vector<std::string> packs;  // the oldest first, as their names begin with the time
    for (const platform::FolderEntry& entry : platform::ListFolder(m_folder))
        if (::IsPack(entry)) packs.push_back(entry.name);
    const std::string since = TimeName(KeptSince());
    for (std::size_t place = 0; place + kPacksKept < packs.size() && packs[place] < since; ++place)
        (void)platform::DeleteFile(m_folder + packs[place]);
}

/// As long as the packed run is there, its undo must be known.
void CRunArchive::RemoveOldUndos() const
{
    constexpr std::string_view kBegin = "undo-", kEnd = ".jsonl";
    for (const platform::FolderEntry& entry : platform::ListFolder(m_folder)) {
        const std::string& name = entry.name;
        if (entry.isFolder || !name.starts_with(kBegin) || !name.ends_with(kEnd)) continue;
        const std::string run = name.substr(kBegin.size(), name.size() - kBegin.size() - kEnd.size());
        const auto stamp = platform::StampOf(m_folder + name);
        if (stamp && stamp->modifiedNanoseconds < KeptSince() && !Has(run))
            (void)platform::DeleteFile(m_folder + name);
    }
}

void CRunArchive::RemoveOldPlan(const std::string& folder) const
{
    const std::string manifest = ManifestIn(folder), journal = JournalIn(folder);
    const auto stamp = platform::StampOf(journal);
    if (!stamp || stamp->modifiedNanoseconds >= KeptSince()) return;
    platform::CFileLock lock;
    if (!lock.TryLock(folder + "lock") || !IsWhollySaved(manifest, journal)) return;
    // As when a run begins: a journal without a manifest is nobody's. The lock file stays, because somebody may be
    // about to lock it.
    (void)platform::DeleteFile(manifest);
    (void)platform::DeleteFile(journal);
}
