#include "jobs/PlannedFiles.h"

#include "jobs/CollisionGroups.h"
#include "platform/Files.h"

#include <chrono>
#include <utility>

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
