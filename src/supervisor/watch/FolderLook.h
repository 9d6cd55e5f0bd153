// One look into a watched folder: which files are there that may become inputs.
#pragma once

#include <string>
#include <vector>

#include "supervisor/watch/WatchModel.h"

struct LookRules {
    std::string folder = {};                   ///< absolute
    std::vector<std::string> extensions = {};  ///< without dots; empty: every file
    bool subfolders = true;
    /// Folders that are not entered, wherever a link to them stands, and files that are not seen.
    std::vector<std::string> leftOut = {};
};

struct FolderLook {
    std::vector<SeenFile> files = {};
    bool whole = true;         ///< every folder could be read
    std::string problem = {};  ///< why the watched folder itself could not be read; empty: it could
};

/// Reads names, sizes and times, and opens no file. Hidden files and folders are left out, and the names under which
/// other programs keep what is not complete.
[[nodiscard]] FolderLook LookInto(const LookRules& rules);

/// Whether programs give such names to what they are still writing or have open: "a.pdf.part", "~$a.pdf".
[[nodiscard]] bool IsTemporaryName(const std::string& name);
/// "pdf; TIF,jpg" as a list; empty for nothing and for "all".
[[nodiscard]] std::vector<std::string> ExtensionList(const std::string& typed);
