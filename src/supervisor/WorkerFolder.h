// The private settings folder of a worker.
#pragma once

#include "common/ProductPaths.h"
#include "platform/Files.h"

#include <string>
#include <string_view>

/// Where the user has settings and log.
[[nodiscard]] ProductPaths UserPaths();

/// Made fresh: a copy of the user's settings, and no log.
class CWorkerFolder {
public:
    explicit CWorkerFolder(std::string folder) : m_folder(std::move(folder)) {}

    /// Creates it, or takes away what an earlier worker has left there.
    platform::FileResult Prepare() const;
    /// What the worker takes for the user's folder for application data.
    const std::string& Path() const { return m_folder; }
    std::string LogPath() const;

private:
    std::string m_folder;
};

/// Removes a folder with all that is in it, as far as it can.
void RemoveFolder(const std::string& folder);
