#ifndef FERRULE_OPENHOST_JOBS_CONTENT_HASHES_H
#define FERRULE_OPENHOST_JOBS_CONTENT_HASHES_H

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace openhost {

/// What tells one state of one file from another without reading it.
struct FileIdentity {
    std::uint64_t device = 0, node = 0, size = 0;
    std::int64_t modifiedNs = 0, changedNs = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
    bool SameFile(const FileIdentity& other) const { return device == other.device && node == other.node; }
};

/// Of a regular file, links followed.
std::optional<FileIdentity> IdentityOf(const std::string& path);

/// SHA-256 of files, each content read once: the last few are remembered by the files' identities.
class CContentHashes {
public:
    /// Empty when the file cannot be read.
    std::string Of(const std::string& path);
    /// `path` has got a new name and is otherwise what it was as `former`.
    void Renamed(const FileIdentity& former, const std::string& path);

private:
    struct Entry {
        FileIdentity identity;
        std::string sha256;
    };
    void Keep(const FileIdentity& identity, std::string sha256);
    std::deque<Entry> m_known;  // the latest first
};

}  // namespace openhost

#endif
