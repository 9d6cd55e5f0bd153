// Which files must not be processed at the same time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Puts files that share a key into one group, also through others. Keys are hashes: two that meet by chance put
/// files together that could have stayed apart, which does no harm.
class CCollisionGroups {
public:
    void Add(std::uint64_t key, std::uint32_t file) { m_entries.push_back({key, file}); }

    /// The group of each file: 0 for one that is alone, else from 1 in the order of the groups' first files. Once.
    [[nodiscard]] std::vector<std::uint32_t> Groups(std::size_t files);

private:
#pragma pack(push, 4)
    struct Entry {
        std::uint64_t key;
        std::uint32_t file;
    };
#pragma pack(pop)

    std::vector<Entry> m_entries;
};
