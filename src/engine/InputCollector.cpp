#include "engine/InputCollector.h"

#include "common/FileNames.h"
#include "common/Text.h"
#include "platform/Files.h"

#include <string_view>
#include <utility>

namespace {

bool HasExtension(const std::string& name, const std::string& extension)
{
    if (extension == "*") return true;
    if (name.size() < extension.size() + 1) return false;
    const std::size_t start = name.size() - extension.size();
    return name[start - 1] == '.' && EqualsIgnoreCaseAscii(std::string_view(name).substr(start), extension);
}

}  // namespace

CInputCollector::CInputCollector(CollectorOptions options) : m_options(std::move(options)) {}

void CInputCollector::AddPath(const std::string& path)
{
    if (!platform::FolderExists(path)) return AddOnce(path);
    std::unordered_set<std::string> entered;
    const Folder folder = ReadFolder(path, entered);
    for (const std::string& extension : m_options.extensions) AddMatching(folder, extension);
}

CInputCollector::Folder CInputCollector::ReadFolder(const std::string& path, std::unordered_set<std::string>& entered)
{
    Folder folder{WithTrailingSeparator(path), {}, {}};
    if (!entered.insert(platform::CanonicalPath(path)).second) return folder;
    platform::FileResult result;
    for (platform::FolderEntry& entry : platform::ListFolder(path, &result)) {
        if (entry.isHidden || entry.name.starts_with('.')) continue;
        if (!entry.isFolder) {
            folder.files.push_back(std::move(entry.name));
        } else if (m_options.subfolders) {
            folder.subfolders.push_back(ReadFolder(folder.path + entry.name, entered));
        }
    }
    if (!result) m_unreadable.push_back({path, result.errorNumber});
    return folder;
}

void CInputCollector::AddMatching(const Folder& folder, const std::string& extension)
{
    for (const std::string& name : folder.files)
        if (HasExtension(name, extension)) AddOnce(folder.path + name);
    for (const Folder& subfolder : folder.subfolders) AddMatching(subfolder, extension);
}

void CInputCollector::AddOnce(const std::string& path)
{
    if (m_known.insert(path).second) m_paths.push_back(path);
}
