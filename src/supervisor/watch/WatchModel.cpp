#include "supervisor/watch/WatchModel.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <tuple>

namespace {

constexpr std::uint64_t kPauseGrows = 4, kLongestPauseMs = 24 * 60 * 60 * 1000;
constexpr std::size_t kWordDigits = 16;

constexpr std::array<std::pair<WatchState, std::string_view>, 4> kStateWords = {
    {{WatchState::Waiting, "waiting"},
     {WatchState::Done, "done"},
     {WatchState::Failed, "failed"},
     {WatchState::Quarantined, "quarantined"}}};

void PackHash(const std::string& sha256, std::uint64_t (&words)[4])
{
    std::fill(std::begin(words), std::end(words), 0);
    if (sha256.size() != kWordDigits * std::size(words)) return;
    for (std::size_t at = 0; at < std::size(words); ++at) {
        const char* const begin = sha256.data() + at * kWordDigits;
        std::from_chars(begin, begin + kWordDigits, words[at], 16);
    }
}

std::string UnpackHash(const std::uint64_t (&words)[4])
{
    if (std::all_of(std::begin(words), std::end(words), [](std::uint64_t word) { return word == 0; })) return {};
    std::string text;
    for (const std::uint64_t word : words) {
        char digits[kWordDigits + 1];
        std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(word));
        text += digits;
    }
    return text;
}

}  // namespace

std::string_view WatchStateWord(WatchState state)
{
    for (const auto& [known, word] : kStateWords)
        if (known == state) return word;
    return {};
}

std::optional<WatchState> WatchStateFromWord(std::string_view word)
{
    for (const auto& [state, known] : kStateWords)
        if (known == word) return state;
    return std::nullopt;
}

void CWatchModel::Restore(const WatchedFile& file, std::uint64_t nowMs)
{
    Entry& entry = m_files[file.path] = {};
    entry.stamp = file.stamp;
    entry.state = file.state;
    entry.tries = static_cast<std::uint32_t>(file.tries);
    entry.seenSeconds = file.seenSeconds;
    entry.wasDone = file.state == WatchState::Done;
    PackHash(file.sha256, entry.hash);
    if (file.state == WatchState::Failed) entry.sinceMs = nowMs + Pause(entry.tries);
    if (file.state == WatchState::Done)
        m_troubles.erase(file.path);
    else
        m_troubles[file.path] = file.trouble;
}

void CWatchModel::Forget(const std::string& path)
{
    m_files.erase(path);
    m_troubles.erase(path);
}

void CWatchModel::Look(const std::vector<SeenFile>& files, bool whole, std::uint64_t nowMs, std::int64_t nowSeconds)
{
    ++m_look;
    for (const SeenFile& file : files) See(file, nowMs, nowSeconds);
    if (!whole) return;
    // A share that is not there may show an empty folder: what is done or in quarantine is not forgotten for that.
    std::erase_if(m_files, [&](const Files::value_type& file) {
        return file.second.look != m_look && file.second.state == WatchState::Waiting;
    });
}

void CWatchModel::See(const SeenFile& file, std::uint64_t nowMs, std::int64_t nowSeconds)
{
    const auto [at, isNew] = m_files.try_emplace(file.path);
    Entry& entry = at->second;
    entry.look = m_look;
    entry.seenSeconds = nowSeconds;
    if (isNew) return Renew(entry, file.stamp, nowMs);
    if (entry.state != WatchState::Waiting) {
        // Whoever wants a file to be tried again only has to touch it.
        if (entry.stamp.IsSameVersion(file.stamp)) return;
        m_troubles.erase(file.path);
        return Renew(entry, file.stamp, nowMs);
    }
    if (!(entry.stamp == file.stamp)) return Renew(entry, file.stamp, nowMs);
    // A time alone would not do: copying programs set it back before they are done.
    if (nowMs - entry.sinceMs >= m_rules.minAgeMs) entry.settled = true;
}

void CWatchModel::Renew(Entry& entry, const WatchStamp& stamp, std::uint64_t nowMs)
{
    entry.stamp = stamp;
    entry.sinceMs = nowMs;
    entry.tries = 0;
    entry.state = WatchState::Waiting;
    entry.settled = false;
}

bool CWatchModel::IsReady(const Entry& entry, std::uint64_t nowMs) const
{
    if (entry.look != m_look) return false;
    if (entry.state == WatchState::Failed) return nowMs >= entry.sinceMs;
    return entry.state == WatchState::Waiting && entry.settled;
}

std::vector<SeenFile> CWatchModel::Ready(std::uint64_t nowMs, std::size_t most) const
{
    std::vector<const Files::value_type*> found;
    for (const auto& file : m_files)
        if (IsReady(file.second, nowMs)) found.push_back(&file);
    const auto middle = found.begin() + static_cast<std::ptrdiff_t>(std::min(most, found.size()));
    std::partial_sort(found.begin(), middle, found.end(), [](const auto* a, const auto* b) {
        return std::tie(a->second.sinceMs, a->first) < std::tie(b->second.sinceMs, b->first);
    });
    std::vector<SeenFile> ready;
    for (auto file = found.begin(); file != middle; ++file) ready.push_back({(*file)->first, (*file)->second.stamp});
    return ready;
}

std::string CWatchModel::DoneHash(const std::string& path) const
{
    const auto file = m_files.find(path);
    return file != m_files.end() && file->second.wasDone ? UnpackHash(file->second.hash) : std::string();
}

WatchedFile CWatchModel::Done(const std::string& path, const WatchStamp& stamp, const std::string& sha256,
                              std::int64_t nowSeconds)
{
    const auto [at, isNew] = m_files.try_emplace(path);
    Entry& entry = at->second;
    if (isNew) entry.look = m_look;
    entry.stamp = stamp;
    entry.state = WatchState::Done;
    entry.tries = 0;
    entry.seenSeconds = nowSeconds;
    entry.wasDone = true;
    PackHash(sha256, entry.hash);
    m_troubles.erase(path);
    return Kept(path, entry);
}

WatchedFile CWatchModel::Failed(const SeenFile& file, const std::string& sha256, const std::string& reason,
                                std::uint64_t nowMs, std::int64_t nowSeconds)
{
    const auto known = m_files.find(file.path);
    const std::uint32_t tries = known == m_files.end() ? 0 : known->second.tries;
    const bool enough = tries + 1 >= static_cast<std::uint32_t>(m_rules.tries);
    WatchedFile kept = Spoil(file, sha256, reason, enough ? WatchState::Quarantined : WatchState::Failed, nowSeconds);
    Entry& entry = m_files[file.path];
    entry.sinceMs = nowMs + Pause(entry.tries);
    return kept;
}

WatchedFile CWatchModel::Quarantine(const SeenFile& file, const std::string& sha256, const std::string& reason,
                                    std::int64_t nowSeconds)
{
    return Spoil(file, sha256, reason, WatchState::Quarantined, nowSeconds);
}

WatchedFile CWatchModel::Spoil(const SeenFile& file, const std::string& sha256, const std::string& reason,
                               WatchState state, std::int64_t nowSeconds)
{
    const auto [at, isNew] = m_files.try_emplace(file.path);
    Entry& entry = at->second;
    if (isNew) entry.look = m_look;
    entry.stamp = file.stamp;
    entry.state = state;
    entry.seenSeconds = nowSeconds;
    entry.wasDone = false;
    ++entry.tries;
    PackHash(sha256, entry.hash);
    WatchTrouble& trouble = m_troubles[file.path];
    trouble.reason = reason;
    trouble.lastSeconds = nowSeconds;
    if (trouble.firstSeconds == 0) trouble.firstSeconds = nowSeconds;
    return Kept(file.path, entry);
}

std::uint64_t CWatchModel::Pause(std::uint32_t tries) const
{
    std::uint64_t pause = m_rules.firstPauseMs;
    for (std::uint32_t done = 1; done < tries && pause < kLongestPauseMs; ++done) pause *= kPauseGrows;
    return std::min(pause, kLongestPauseMs);
}

std::vector<std::string> CWatchModel::ReleaseQuarantined()
{
    std::vector<std::string> released;
    for (const auto& [path, entry] : m_files)
        if (entry.state == WatchState::Quarantined) released.push_back(path);
    for (const std::string& path : released) Forget(path);
    return released;
}

void CWatchModel::ForgetOlderThan(std::int64_t seconds)
{
    std::vector<std::string> old;
    for (const auto& [path, entry] : m_files)
        if (entry.look != m_look && entry.seenSeconds < seconds) old.push_back(path);
    for (const std::string& path : old) Forget(path);
}

bool CWatchModel::IsKept(const std::string& path) const
{
    const auto file = m_files.find(path);
    return file != m_files.end() && file->second.state != WatchState::Waiting;
}

std::size_t CWatchModel::Waiting() const
{
    return static_cast<std::size_t>(std::count_if(
        m_files.begin(), m_files.end(), [](const auto& file) { return file.second.state == WatchState::Waiting; }));
}

void CWatchModel::ForEach(const std::function<void(const WatchedFile&)>& take) const
{
    for (const auto& [path, entry] : m_files)
        if (entry.state != WatchState::Waiting) take(Kept(path, entry));
}

std::vector<WatchedFile> CWatchModel::Quarantined() const
{
    std::vector<WatchedFile> found;
    for (const auto& [path, entry] : m_files)
        if (entry.state == WatchState::Quarantined && entry.look == m_look) found.push_back(Kept(path, entry));
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.path < b.path; });
    return found;
}

WatchedFile CWatchModel::Kept(const std::string& path, const Entry& entry) const
{
    WatchedFile file{.path = path,
                     .state = entry.state,
                     .stamp = entry.stamp,
                     .sha256 = UnpackHash(entry.hash),
                     .tries = static_cast<int>(entry.tries),
                     .seenSeconds = entry.seenSeconds};
    if (const auto trouble = m_troubles.find(path); trouble != m_troubles.end()) file.trouble = trouble->second;
    return file;
}
