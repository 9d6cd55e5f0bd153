// What a watch knows of the files in its folder: which of them are ready, done, to be tried again, or in quarantine.
// It looks at no disk and at no clock.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

/// What tells one state of a file from another.
struct WatchStamp {
    std::uint64_t size = 0;                ///< bytes
    std::int64_t modifiedNanoseconds = 0;  ///< since 1970
    std::int64_t changedNanoseconds = 0;   ///< likewise; 0 in what was read from a journal
    std::uint64_t inode = 0;               ///< likewise
    friend bool operator==(const WatchStamp&, const WatchStamp&) = default;

    /// Size and time of the content alone: links and rights may have changed.
    bool IsSameVersion(const WatchStamp& other) const
    {
        return size == other.size && modifiedNanoseconds == other.modifiedNanoseconds;
    }
};

struct SeenFile {
    std::string path = {};
    WatchStamp stamp = {};
};

enum class WatchState {
    Waiting,     ///< seen, and perhaps still growing
    Done,        ///< this version needs nothing any more
    Failed,      ///< is tried again after a pause
    Quarantined  ///< is left alone until it changes or somebody releases it
};
/// "waiting", "done", "failed", "quarantined".
[[nodiscard]] std::string_view WatchStateWord(WatchState state);
[[nodiscard]] std::optional<WatchState> WatchStateFromWord(std::string_view word);

/// Why a file is not done. Times are seconds since 1970, for people to read.
struct WatchTrouble {
    std::string reason = {};
    std::int64_t firstSeconds = 0, lastSeconds = 0;
};

/// A file that is done, failed or in quarantine: what a journal keeps of it.
struct WatchedFile {
    std::string path = {};
    WatchState state = WatchState::Done;
    WatchStamp stamp = {};
    std::string sha256 = {};  ///< of the version; empty when unknown
    int tries = 0;
    WatchTrouble trouble = {};
    std::int64_t seenSeconds = 0;  ///< since 1970: when it was there last; 0: unknown
};

struct WatchRules {
    std::uint64_t minAgeMs = 0;           ///< between two looks at an unchanged file
    int tries = 5;                        ///< after so many a file goes to quarantine
    std::uint64_t firstPauseMs = 60'000;  ///< before the second try; each later one is four times as long
};

/// Times `nowMs` are milliseconds of a clock that never goes back. Memory: about 150 bytes and the path for each
/// file, and as much again with the reason for each that is not fine.
class CWatchModel {
public:
    explicit CWatchModel(const WatchRules& rules) : m_rules(rules) {}

    /// What the journal says; a pause begins anew.
    void Restore(const WatchedFile& file, std::uint64_t nowMs);
    void Forget(const std::string& path);

    /// What is in the folder now. `whole`: nothing was left out, so that what is missing is gone.
    void Look(const std::vector<SeenFile>& files, bool whole, std::uint64_t nowMs, std::int64_t nowSeconds);

    /// The files that may be taken now, those seen first before others, at most `most`.
    [[nodiscard]] std::vector<SeenFile> Ready(std::uint64_t nowMs, std::size_t most) const;
    /// What the content of the file had as its hash when it was done; empty when it never was. A file with this
    /// content is no new version, whatever its time.
    [[nodiscard]] std::string DoneHash(const std::string& path) const;

    // What became of a file that was ready. Each answers what the journal is to keep.

    /// `stamp`: of the version that needs nothing any more.
    WatchedFile Done(const std::string& path, const WatchStamp& stamp, const std::string& sha256,
                     std::int64_t nowSeconds);
    /// Tried once more after a pause, until it has been tried often enough.
    WatchedFile Failed(const SeenFile& file, const std::string& sha256, const std::string& reason,
                       std::uint64_t nowMs, std::int64_t nowSeconds);
    WatchedFile Quarantine(const SeenFile& file, const std::string& sha256, const std::string& reason,
                           std::int64_t nowSeconds);

    /// All files in quarantine are new. Answers their paths.
    std::vector<std::string> ReleaseQuarantined();
    /// Forgets what has not been there since that time, and was not there at the last look.
    void ForgetOlderThan(std::int64_t seconds);

    /// Whether a journal keeps something of the file.
    [[nodiscard]] bool IsKept(const std::string& path) const;
    /// Files that somebody may still be writing, or that are ready and not taken yet.
    [[nodiscard]] std::size_t Waiting() const;
    [[nodiscard]] std::size_t Size() const { return m_files.size(); }
    /// All that a journal keeps, in no order.
    void ForEach(const std::function<void(const WatchedFile&)>& take) const;
    /// Those in quarantine that were there at the last look, by path.
    [[nodiscard]] std::vector<WatchedFile> Quarantined() const;

private:
    struct Entry {
        WatchStamp stamp = {};
        std::uint64_t sinceMs = 0;  // since when it has been unchanged; of a failed one, when it is tried again
        std::int64_t seenSeconds = 0;
        std::uint64_t hash[4] = {};  // SHA-256; only zeros: unknown
        std::uint32_t tries = 0;
        std::uint32_t look = 0;  // the last one that it was in
        WatchState state = WatchState::Waiting;
        bool wasDone = false;  // the hash is that of a version that is done
        bool settled = false;  // unchanged for long enough
    };
    using Files = std::unordered_map<std::string, Entry>;

    void See(const SeenFile& file, std::uint64_t nowMs, std::int64_t nowSeconds);
    static void Renew(Entry& entry, const WatchStamp& stamp, std::uint64_t nowMs);
    bool IsReady(const Entry& entry, std::uint64_t nowMs) const;
    std::uint64_t Pause(std::uint32_t tries) const;
    WatchedFile Spoil(const SeenFile& file, const std::string& sha256, const std::string& reason, WatchState state,
                      std::int64_t nowSeconds);
    WatchedFile Kept(const std::string& path, const Entry& entry) const;

    WatchRules m_rules;
    Files m_files;
    std::unordered_map<std::string, WatchTrouble> m_troubles;
    std::uint32_t m_look = 0;
};
