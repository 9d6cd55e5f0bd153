#include "supervisor/GroupedInputs.h"

#include "supervisor/Manifest.h"

#include <algorithm>
#include <functional>

CGroupedInputs::CGroupedInputs(const std::string& manifestPath)
{
    CManifestReader manifest;
    if (!manifest.Open(manifestPath)) return;
    while (const auto file = manifest.Next())
        if (file->group != 0) m_hashes.push_back(std::hash<std::string>{}(file->path));
    std::sort(m_hashes.begin(), m_hashes.end());
}

bool CGroupedInputs::Contains(const std::string& path) const
{
    return std::binary_search(m_hashes.begin(), m_hashes.end(), std::hash<std::string>{}(path));
}
