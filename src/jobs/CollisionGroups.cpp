#include "jobs/CollisionGroups.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

/// Sets of files that are joined pair by pair.
class CUnions {
public:
    explicit CUnions(std::size_t files) : m_parents(files) { std::iota(m_parents.begin(), m_parents.end(), 0u); }

    /// The first file of the set, which stands for it.
    std::uint32_t First(std::uint32_t file)
    {
        while (m_parents[file] != file) file = m_parents[file] = m_parents[m_parents[file]];
        return file;
    }

    void Join(std::uint32_t one, std::uint32_t other)
    {
        one = First(one);
        other = First(other);
        m_parents[std::max(one, other)] = std::min(one, other);
    }

private:
    std::vector<std::uint32_t> m_parents;
};

}  // namespace

std::vector<std::uint32_t> CCollisionGroups::Groups(std::size_t files)
{
    std::sort(m_entries.begin(), m_entries.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });
    CUnions unions(files);
    for (std::size_t i = 1; i < m_entries.size(); ++i)
        if (m_entries[i].key == m_entries[i - 1].key) unions.Join(m_entries[i].file, m_entries[i - 1].file);
    m_entries = {};

    // A first file stands before the others of its set, so the group can be told when the second one comes.
    std::vector<std::uint32_t> groups(files, 0);
    for (std::uint32_t file = 0; file < files; ++file)
        if (const std::uint32_t first = unions.First(file); first != file) groups[file] = groups[first] = 1;
    std::uint32_t count = 0;
    for (std::uint32_t file = 0; file < files; ++file) {
        if (groups[file] == 0) continue;
        const std::uint32_t first = unions.First(file);
        groups[file] = first == file ? ++count : groups[first];
    }
    return groups;
}
