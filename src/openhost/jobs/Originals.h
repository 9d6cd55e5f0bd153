#pragma once

#include <optional>
#include <string>

#include "base/Expected.h"
#include "platform/FileKeeper.h"
#include "protocol/Acts.h"
#include "protocol/RunDescription.h"

namespace openhost {

/// Keeps what acts take away, each in a place of its own: "<folder>/<thousands>/<number>-<n> <name>". The folder is
/// readable for its owner alone, because it holds documents before they were protected.
class COriginals {
public:
    explicit COriginals(Keeping keeping) : m_keeping(std::move(keeping)), m_keeper(m_keeping.mayLink) {}

    bool Wanted() const { return !m_keeping.folder.empty(); }
    /// `number`: of the input file that the act is done for. Answers where the file is kept, on disk by then. Fails
    /// with a sentence that names file and folder.
    [[nodiscard]] Expected<std::string> Keep(const std::string& path, int number);

private:
    Keeping m_keeping;
    platform::CFileKeeper m_keeper;
    std::string m_folder;  // made or found already
};

/// What stands at the path: without content, and not kept. Nothing when there is neither file nor link. Fails with a
/// sentence when that cannot be told.
[[nodiscard]] Expected<std::optional<FormerFile>> LookAtFormer(const std::string& path);

}  // namespace openhost
