// Gives files of the rename tool their new names, in one go.
#pragma once

#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/RenameReport.h"
#include "naming/RenameSettings.h"
#include "tools/rename/RenameLists.h"

class CLogWriter;
class CProgressMonitorWrapper;

struct RenameRequest {
    std::vector<std::string> paths = {};  ///< bytes
    std::vector<std::string> names = {};  ///< UTF-8, one for each path; empty: the file keeps its name
    RenameSettings settings = {};
    std::string settingsFile = {};  ///< that the settings were written into
    std::string listFolder = {};    ///< for the lists of CRenameLists; made when it is missing
};

/// Renames the files, or moves them into the output folder of the settings. After a cancel the rest keeps its names
/// but for those that stand under a third name, in a cycle of names. Fails with a sentence when nothing was begun.
[[nodiscard]] Expected<CRenameReport> RenameFilesOf(const RenameRequest& request, CProgressMonitorWrapper& progress,
                                                    CLogWriter& log);

/// Does what is left to do of a renaming that was cut short; the report is on all of it. Of the request paths and
/// names do not count.
[[nodiscard]] Expected<CRenameReport> FinishRenaming(CRenameLists lists, const RenameRequest& request,
                                                     CProgressMonitorWrapper& progress, CLogWriter& log);
