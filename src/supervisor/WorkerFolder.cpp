#include "supervisor/WorkerFolder.h"

#include "platform/Environment.h"
#include "platform/PrivateFolder.h"
#include "platform/StandardPath.h"

#include <filesystem>
#include <system_error>
#include <utility>

ProductPaths UserPaths() { return MakeProductPaths(platform::ApplicationDataFolder()); }

void RemoveFolder(const std::string& folder)
{
    std::error_code ignored;
    std::filesystem::remove_all(platform::StandardPath(folder), ignored);
}

platform::FileResult CWorkerFolder::Prepare() const
{
    RemoveFolder(m_folder);
    // What could not be removed is used once more.
    if (const auto made = platform::CreatePrivateFolder(m_folder); !made && !platform::IsOwnFolder(m_folder))
        return made;
    const ProductPaths users = UserPaths(), own = MakeProductPaths(m_folder);
    if (const platform::FileResult made = platform::CreateFolders(own.settingsFolder); !made) return made;
    // Without the user's settings the worker would do something else than the user's own host.
    for (const auto& [from, to] : {std::pair(users.settingsFile, own.settingsFile),
                                   std::pair(users.searchSettingsFile, own.searchSettingsFile)}) {
        // Nobody misses the copy after a power cut, so it is not flushed.
        std::error_code error;
        if (platform::FileExists(from))
            std::filesystem::copy_file(platform::StandardPath(from), platform::StandardPath(to), error);
        if (error) return {error.value()};
    }
    return {};
}

std::string CWorkerFolder::LogPath() const { return MakeProductPaths(m_folder).logFile; }
