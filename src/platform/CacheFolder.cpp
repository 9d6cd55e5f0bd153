#include "platform/CacheFolder.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <utility>
#include <vector>

#include "base/Names.h"
#include "base/Overseer.h"
#include "platform/AtomicFile.h"
#include "platform/NarrowText.h"
#include "platform/TemporaryFile.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kBytesBetweenLooks = 64 << 20;
constexpr std::uint64_t kLargestEntry = 256 << 20;
constexpr std::size_t kFolderLetters = 2;  // of the name, so that no folder gets too many entries
constexpr auto kUseIsNotedAfter = std::chrono::hours(12);
constexpr auto kLeftByTheKilledAfter = std::chrono::hours(1);

/// What backup programs look for to leave a folder out; the text is that of the Cache Directory Tagging standard.
constexpr char kTagName[] = "CACHEDIR.TAG";
constexpr std::string_view kTag =
    "Signature: 8a477f597d28d172789f06886806bc55\n# Copies of what can be read from documents again.\n";

struct Entry {
    std::string path;
    std::uint64_t size = 0;
    std::int64_t usedNanoseconds = 0;
    bool isTemporary = false;
};

/// All entries, and the temporary files of writers, those at work included.
std::vector<Entry> EntriesIn(const std::string& folder, const std::string& suffix)
{
    std::vector<Entry> entries;
    for (const FolderEntry& part : ListFolder(folder)) {
        if (!part.isFolder || part.name.size() != kFolderLetters) continue;
        const std::string place = folder + kSeparator + part.name;
        for (const FolderEntry& file : ListFolder(place)) {
            const bool isTemporary = file.name.starts_with(TemporaryPrefix(""));
            if (!isTemporary && !file.name.ends_with(suffix)) continue;
            const std::string path = place + kSeparator + file.name;
            const auto stamp = StampOf(path);
            if (stamp && stamp->regular)
                entries.push_back({path, stamp->size, stamp->modifiedNanoseconds, isTemporary});
        }
    }
    return entries;
}

CacheState SumOf(const std::vector<Entry>& entries)
{
    CacheState state;
    for (const Entry& entry : entries) {
        ++state.files;
        state.bytes += entry.size;
    }
    return state;
}

bool RemoveFile(const std::string& path)
{
    std::error_code error;
    return fs::remove(StandardPath(path), error);
}

std::int64_t NowNanoseconds()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
}

bool IsOlder(std::int64_t nanoseconds, std::chrono::nanoseconds age)
{
    return NowNanoseconds() - nanoseconds > age.count();
}

}  // namespace

CCacheFolder::CCacheFolder(std::string folder, std::string suffix, std::uint64_t maxBytes)
    : m_folder(std::move(folder)), m_suffix(std::move(suffix)), m_maxBytes(maxBytes)
{
    Prepare();
}

CCacheFolder::~CCacheFolder()
{
    const CUnwatched unwatched;
    if (m_written > 0) Trim();
}

void CCacheFolder::Prepare()
{
    const CUnwatched unwatched;
    const auto fail = [&](const std::string& why) { m_problem = m_folder + ": " + why; };
    if (m_folder.empty()) return fail("this user has no folder for caches");
    if (const auto made = CreateFolders(FolderOf(m_folder)); !made) return fail(ErrorText(made.errorNumber));
    if (CreatePrivateFolder(m_folder)) {
        (void)WriteFileAtomically(m_folder + kSeparator + kTagName, kTag, Readers::Owner);
        return;
    }
    if (!IsOwnFolder(m_folder)) return fail("is not a folder of this user");
    if (const auto made = MakeFolderPrivate(m_folder); !made) fail(ErrorText(made.errorNumber));
}

std::string CCacheFolder::PathOf(const std::string& name) const
{
    return m_folder + kSeparator + name.substr(0, kFolderLetters) + kSeparator + name + m_suffix;
}

std::optional<std::string> CCacheFolder::Read(const std::string& name) const
{
    const CUnwatched unwatched;
    if (!IsUsable()) return std::nullopt;
    const std::string path = PathOf(name);
    auto bytes = ReadWholeFile(path, kLargestEntry);
    if (!bytes) return std::nullopt;
    const auto stamp = StampOf(path);
    std::error_code ignored;
    if (stamp && IsOlder(stamp->modifiedNanoseconds, kUseIsNotedAfter))
        fs::last_write_time(StandardPath(path), fs::file_time_type::clock::now(), ignored);
    return bytes;
}

void CCacheFolder::Write(const std::string& name, std::string_view bytes)
{
    const CUnwatched unwatched;
    if (!IsUsable() || bytes.size() > std::min(kLargestEntry, m_maxBytes)) return;
    const std::string path = PathOf(name);
    (void)CreatePrivateFolder(FolderOf(path));
    CTemporaryFile file;
    FileResult done = file.CreateBeside(path, Readers::Owner);
    if (done) done = file.Write(bytes);
    if (done) {
        file.CloseUnflushed();
        done = file.PutInPlace(path, Existing::Replace);
    }
    if (!done) {
        m_problem = path + ": " + ErrorText(done.errorNumber);
        return;
    }
    m_written += bytes.size();
    if (m_written > kBytesBetweenLooks) Trim();
}

void CCacheFolder::Remove(const std::string& name) const { (void)RemoveFile(PathOf(name)); }

CacheState CCacheFolder::State() const
{
    const CUnwatched unwatched;
    return SumOf(EntriesIn(m_folder, m_suffix));
}

CacheState CCacheFolder::Clear()
{
    const CUnwatched unwatched;
    std::vector<Entry> removed;
    if (!IsUsable()) return {};
    for (Entry& entry : EntriesIn(m_folder, m_suffix))
        if (RemoveFile(entry.path)) removed.push_back(std::move(entry));
    return SumOf(removed);
}

void CCacheFolder::Trim()
{
    m_written = 0;
    std::vector<Entry> entries = EntriesIn(m_folder, m_suffix);
    std::erase_if(entries, [](const Entry& entry) {
        return entry.isTemporary &&
               (!IsOlder(entry.usedNanoseconds, kLeftByTheKilledAfter) || RemoveFile(entry.path));
    });
    std::uint64_t bytes = SumOf(entries).bytes;
    if (bytes <= m_maxBytes) return;
    // Somewhat more than must be, so that not every process has to do it again.
    const std::uint64_t wanted = m_maxBytes - m_maxBytes / 8;
    std::ranges::sort(entries, {}, &Entry::usedNanoseconds);
    for (const Entry& entry : entries) {
        if (bytes <= wanted) break;
        if (RemoveFile(entry.path)) bytes -= entry.size;
    }
}

}  // namespace platform
