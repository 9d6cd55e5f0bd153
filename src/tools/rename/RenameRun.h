// Gives files of the rename tool their new names, in one go.
#pragma once

#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/RenameReport.h"
#include "naming/RenameSettings.h"

class CLogWriter;
class CProgressMonitorWrapper;

struct RenameRequest {
    std::vector<std::string> paths;  ///< bytes
    std::vector<std::string> names;  ///< UTF-8, one for each path; empty: the file keeps its name
    RenameSettings settings;
    std::string settingsFile;  ///< that the settings were written into
    std::string listFolder;    ///< for the two lists below; made when it is missing
};

/// In the folder of lists: the way back from the renaming that was done last, as a list of new names.
inline constexpr char kWayBackList[] = "way-back.csv";

/// Renames the files, or moves them into the output folder of the settings. For as long as that takes, a list of all
/// new names is in the folder of lists, and the way back grows with each file. After a cancel the rest keeps its
/// names but for those that stand under a third name, in a cycle of names. Fails with a sentence when nothing was
/// begun.
[[nodiscard]] Expected<CRenameReport> RenameFilesOf(const RenameRequest& request, CProgressMonitorWrapper& progress,
                                                    CLogWriter& log);
