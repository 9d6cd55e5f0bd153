#include "engine/InputState.h"

bool HasChanged(const std::string& path, const std::optional<platform::FileStamp>& known)
{
    const auto now = known ? platform::StampOf(path) : std::nullopt;
    if (!now) return false;
    return now->device != known->device || now->inode != known->inode || now->size != known->size ||
           now->modifiedNanoseconds != known->modifiedNanoseconds;
}

bool IsSameFile(const std::string& path, const std::string& otherPath)
{
    return path == otherPath || (platform::FileExists(path) && platform::FileExists(otherPath) &&
                                 platform::CanonicalPath(path) == platform::CanonicalPath(otherPath));
}

bool IsSameFolder(const std::string& path, const std::string& otherPath)
{
    const auto canonical = [](const std::string& folder) {
        return platform::CanonicalPath(folder.empty() ? "." : folder);
    };
    const std::string one = canonical(path);
    return path == otherPath || (!one.empty() && one == canonical(otherPath));
}
