#pragma once

#include <deque>
#include <optional>
#include <string>

#include "platform/Files.h"

namespace openhost {

/// The stamp of a regular file; links are followed.
std::optional<platform::FileStamp> StampOfRegularFile(const std::string& path);

/// SHA-256 of files, each content read once: the last few are remembered by the files' stamps.
class CContentHashes {
public:
    /// Empty when the file cannot be read.
    std::string Of(const std::string& path);
    /// `path` has got a new name and is otherwise what it was as `former`.
    void Renamed(const platform::FileStamp& former, const std::string& path);

private:
    struct Entry {
        platform::FileStamp stamp;
        std::string sha256;
    };
    void Keep(const platform::FileStamp& stamp, std::string sha256);
    std::deque<Entry> m_known;  // the latest first
};

}  // namespace openhost
