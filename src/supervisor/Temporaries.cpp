#include "supervisor/Temporaries.h"

#include "base/PathNames.h"
#include "platform/Files.h"

int RemoveTemporaries(const std::set<std::string>& folders, const std::string& prefix)
{
    int removed = 0;
    for (const std::string& folder : folders) {
        if (folder.empty()) continue;
        for (const platform::FolderEntry& entry : platform::ListFolder(folder))
            if (!entry.isFolder && entry.name.starts_with(prefix))
                removed += platform::DeleteFile(WithTrailingSeparator(folder) + entry.name).Ok() ? 1 : 0;
    }
    return removed;
}
