// The inputs of a run whose names meet those of others, to keep them from being replaced.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Memory: eight bytes for each input of a group.
class CGroupedInputs {
public:
    /// Reads the manifest once. One that cannot be read has none.
    explicit CGroupedInputs(const std::string& manifestPath);

    bool Contains(const std::string& path) const;

private:
    std::vector<std::uint64_t> m_hashes;  // of the paths, sorted
};
