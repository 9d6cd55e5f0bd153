#include "jobs/PlannedFiles.h"

#include <algorithm>
#include <chrono>
#include <numeric>
#include <utility>

#include "platform/Files.h"

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

namespace {

std::int64_t NowNanoseconds()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

std::uint64_t IdentityOf(const platform::FileStamp& stamp)
{
    return (stamp.inode + 1) * 0x9E3779B97F4A7C15 ^ stamp.device * 0xC2B2AE3D27D4EB4F;
}

}  // namespace

CPlannedFiles::CPlannedFiles(CInputCollector inputs, double minAgeSeconds) : m_inputs(std::move(inputs))
{
    const CPathStore& paths = m_inputs.Paths();
    m_files.reserve(paths.Size());
    const std::int64_t newest = NowNanoseconds() - static_cast<std::int64_t>(minAgeSeconds * 1e9);
    for (std::uint32_t index = 0; index < paths.Size(); ++index) {
        const auto stamp = platform::StampOf(paths.Path(index));
        if (!stamp) {
            m_files.push_back({0, 0, 0, index});
        } else if (minAgeSeconds > 0 && stamp->modifiedNanoseconds > newest) {
            ++m_tooYoung;
        } else {
            m_files.push_back({stamp->size, stamp->modifiedNanoseconds, IdentityOf(*stamp), index});
        }
    }
}

void CPlannedFiles::ForEach(CTouchedNames& names, const std::function<void(const PlannedFile&)>& visit) const
{
    const std::vector<std::uint32_t> groups = Groups(names);
    PlannedFile planned;
    for (const File& file : m_files) {
        planned.group = groups[static_cast<std::size_t>(planned.number++)];
        planned.path = m_inputs.Paths().Path(file.index);
        planned.size = file.size;
        planned.modifiedNanoseconds = file.modifiedNanoseconds;
        visit(planned);
    }
}

std::vector<std::uint32_t> CPlannedFiles::Groups(CTouchedNames& names) const
{
    const CPathStore& paths = m_inputs.Paths();
    CCollisionGroups groups;
    std::vector<std::uint64_t> keys;
    for (std::uint32_t place = 0; place < m_files.size(); ++place) {
        const File& file = m_files[place];
        keys.clear();
        names.AppendKeys(paths.FolderText(paths.FolderOfItem(file.index)), paths.Name(file.index), keys);
        if (file.identity != 0) keys.push_back(file.identity);
        for (const std::uint64_t key : keys) groups.Add(key, place);
    }
    return groups.Groups(m_files.size());
}
