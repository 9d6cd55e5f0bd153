#include "supervisor/GroupedInputs.h"

#include <algorithm>
#include <filesystem>
#include <functional>

namespace {

/// Equal for a path and the same path with separators more than needed.
std::uint64_t HashOf(const std::string& path)
{
    return std::hash<std::string>{}(std::filesystem::path(path).lexically_normal().string());
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
