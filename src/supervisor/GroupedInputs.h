// The inputs of a run whose names meet those of others, to keep them from being replaced.
#pragma once

#include "supervisor/RunObserver.h"

#include <cstdint>
#include <string>
#include <vector>

/// Memory: eight bytes for each input of a group.
class CGroupedInputs {
public:
    /// A file of the manifest; those that are alone do not count.
    void Add(const PlannedFile& file);
    /// Once, after the last file.
    void Complete();

    bool Contains(const std::string& path) const;

private:
    std::vector<std::uint64_t> m_hashes;  // of the paths, sorted
};
