#include "supervisor/WorkerFolder.h"

#include "platform/Environment.h"

#include <filesystem>
#include <system_error>
#include <utility>

ProductPaths UserPaths() { return MakeProductPaths(platform::ApplicationDataFolder()); }

void RemoveFolder(const std::string& folder)
{
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

platform::FileResult CWorkerFolder::Prepare() const
{
    RemoveFolder(m_folder);
    const ProductPaths users = UserPaths(), own = MakeProductPaths(m_folder);
    if (const platform::FileResult made = platform::CreateFolders(own.settingsFolder); !made) return made;
    // Without the user's settings the worker would do something else than the user's own host.
    for (const auto& [from, to] : {std::pair(users.settingsFile, own.settingsFile),
                                   std::pair(users.searchSettingsFile, own.searchSettingsFile)}) {
        if (!platform::FileExists(from)) continue;
        if (const auto copied = platform::CopyFile(from, to, platform::Existing::Replace); !copied) return copied;
    }
    return {};
}

std::string CWorkerFolder::LogPath() const { return MakeProductPaths(m_folder).logFile; }
