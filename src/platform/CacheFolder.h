// Files of a cache: what can be made again at any time, kept in a folder of the user's own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Files.h"

namespace platform {

struct CacheState {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
};

/// Entries by name in a folder that only its user may look into; several processes may use it at the same time.
///
/// Nothing here is flushed, so that after a power cut an entry may hold anything: whoever reads one checks it. An
/// entry appears complete under its name or not at all. No failure is worth more than a look at the disk: an entry
/// that cannot be read is not there, and after one that cannot be written nothing more is. An overseer is not asked:
/// these files are nobody's documents.
class CCacheFolder {
public:
    /// Takes a folder that is there only when it is this user's own, no link, and makes it private. `suffix`: what
    /// the names of the entries end with; no other file of the folder is ever touched.
    CCacheFolder(std::string folder, std::string suffix, std::uint64_t maxBytes);
    CCacheFolder(const CCacheFolder&) = delete;
    CCacheFolder& operator=(const CCacheFolder&) = delete;
    /// Removes the entries that were used least recently when there is too much of them.
    ~CCacheFolder();

    /// False: the folder cannot be used, and Problem says why.
    bool IsUsable() const { return m_problem.empty(); }
    const std::string& Problem() const { return m_problem; }

    /// The name has no suffix and at least two characters, all of them letters, digits or hyphens.
    std::optional<std::string> Read(const std::string& name) const;
    void Write(const std::string& name, std::string_view bytes);
    void Remove(const std::string& name) const;

    CacheState State() const;
    /// Removes all entries, and what killed processes left; answers what was removed.
    CacheState Clear();

private:
    void Prepare();
    std::string PathOf(const std::string& name) const;
    void Trim();

    std::string m_folder, m_suffix;
    std::uint64_t m_maxBytes;
    std::string m_problem;
    std::uint64_t m_written = 0;  // bytes since the last look at the whole
};

}  // namespace platform
