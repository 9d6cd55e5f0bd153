#include "engine/InputCollector.h"

#include "base/PathNames.h"
#include "base/Text.h"
#include "platform/Files.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

bool HasExtension(std::string_view name, std::string_view extension)
{
    if (extension == "*") return true;
    if (name.size() < extension.size() + 1) return false;
    const std::size_t start = name.size() - extension.size();
    return name[start - 1] == '.' && EqualsIgnoreCaseAscii(name.substr(start), extension);
}

}  // namespace

CInputCollector::CInputCollector(CollectorOptions options) : m_options(std::move(options))
{
    for (const std::string& folder : m_options.leftOut)
        if (std::string place = platform::CanonicalPath(folder); !place.empty())
            m_leftOutPlaces.insert(std::move(place));
}

void CInputCollector::AddPath(const std::string& path)
{
    if (!platform::FolderExists(path)) {
        if (m_paths.AddPath(path)) m_namedFiles.push_back(path);
        return;
    }
    Walk walk;
    ReadFolder(path, walk);
    for (const std::string& extension : m_options.extensions)
        for (const CPathStore::Item& file : walk.files)
            if (HasExtension({file.name, file.length}, extension)) m_paths.Add(file);
}

void CInputCollector::ReadFolder(const std::string& path, Walk& walk)
{
    const bool isTop = walk.entered.empty();
    const std::string place = platform::CanonicalPath(path);
    if (!walk.entered.insert(place).second) return;
    if (!isTop && m_leftOutPlaces.contains(place)) {
        if (std::find(m_leftOut.begin(), m_leftOut.end(), path) == m_leftOut.end()) m_leftOut.push_back(path);
        return;
    }
    const std::string folder = WithTrailingSeparator(path);
    std::vector<std::string> subfolders;
    platform::FileResult result;
    for (const platform::FolderEntry& entry : platform::ListFolder(path, &result)) {
        if (entry.isHidden || entry.name.starts_with('.')) continue;
        if (entry.isFolder) {
            if (m_options.subfolders) subfolders.push_back(entry.name);
        } else if (IsWanted(entry.name)) {
            walk.files.push_back(m_paths.Hold(m_paths.FolderNumber(folder), entry.name));
        }
    }
    for (const std::string& name : subfolders) ReadFolder(folder + name, walk);
    if (!result) m_unreadable.push_back({path, result.errorNumber});
}

bool CInputCollector::IsWanted(const std::string& name) const
{
    return std::any_of(m_options.extensions.begin(), m_options.extensions.end(),
                       [&](const std::string& extension) { return HasExtension(name, extension); });
}
