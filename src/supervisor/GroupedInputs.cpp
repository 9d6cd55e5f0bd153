#include "supervisor/GroupedInputs.h"

#include <algorithm>
#include <filesystem>
#include <functional>

#include "base/Names.h"
#include "base/PathNames.h"
#include "platform/NarrowText.h"

namespace {

/// Equal for a path and the same path with separators more than needed, or in other letters where they do not count.
std::uint64_t HashOf(const std::string& path)
{
    const std::string normal = platform::TextOf(platform::StandardPath(path).lexically_normal().make_preferred());
    return std::hash<std::string>{}(kNamesIgnoreCase ? LowerCasedName(normal) : normal);
}

}  // namespace

void CGroupedInputs::Add(const PlannedFile& file)
{
    if (file.group != 0) m_hashes.push_back(HashOf(file.path));
}

void CGroupedInputs::Complete() { std::sort(m_hashes.begin(), m_hashes.end()); }

bool CGroupedInputs::Contains(const std::string& path) const
{
    return std::binary_search(m_hashes.begin(), m_hashes.end(), HashOf(path));
}
