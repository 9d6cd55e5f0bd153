#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

#include "base/Names.h"
#include "platform/FileCalls_posix.h"
#include "platform/Files.h"

namespace platform {
namespace {

bool IsFolder(const std::string& prefix, const dirent& found)
{
    if (found.d_type == DT_DIR) return true;
    if (found.d_type != DT_LNK && found.d_type != DT_UNKNOWN) return false;
    return FolderExists(prefix + found.d_name);
}

FileResult ReadEntries(DIR* folder, const std::string& prefix, std::vector<FolderEntry>& listed)
{
    for (;;) {
        const dirent* found = calls::ReadFolder(folder);
        if (!found) return {errno};
        std::string name = found->d_name;
        if (name == "." || name == "..") continue;
        const bool hidden = name[0] == '.';
        listed.push_back({std::move(name), IsFolder(prefix, *found), hidden});
    }
}

FileResult List(const std::string& path, std::vector<FolderEntry>& listed)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(calls::OpenFolder(path),
                                                     [](DIR* open) { return closedir(open); });
    if (!folder) return {errno};
    return ReadEntries(folder.get(), path.ends_with('/') ? path : path + '/', listed);
}

}  // namespace

std::vector<FolderEntry> ListFolder(const std::string& path, FileResult* result)
{
    std::vector<FolderEntry> listed;
    const auto outcome = List(path, listed);
    if (result) *result = outcome;
    if (!outcome) return {};
    std::ranges::sort(listed, NameComesBefore, &FolderEntry::name);
    return listed;
}

}  // namespace platform
