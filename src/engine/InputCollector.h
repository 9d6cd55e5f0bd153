// Collects the input files of a run from files and folders.
#pragma once

#include "engine/PathStore.h"

#include <string>
#include <unordered_set>
#include <vector>

struct CollectorOptions {
    std::vector<std::string> extensions;  // accepted in folders, without dots, in order; "*" accepts every file
    bool subfolders = true;
    /// Folders that are not entered from one above them, wherever a link to them stands: results go there.
    std::vector<std::string> leftOut = {};
};

struct UnreadableFolder {
    std::string path;
    int errorNumber = 0;
};

/// The list of input files, each path text at most once.
///
/// Of a folder come first all files of the first extension: those of the folder itself, then those of each subfolder,
/// depth first and in the order in which the system module lists folders; then the files of the next extension from
/// the top again. Letter case of extensions does not count. Hidden files and folders are left out. A folder that is
/// reached a second time, over a link, is not entered again. A folder that is left out may still be named itself.
class CInputCollector {
public:
    explicit CInputCollector(CollectorOptions options);

    /// Adds the files of a folder, or the path itself when it is no folder, whatever its extension and even when
    /// nothing is there.
    void AddPath(const std::string& path);

    const CPathStore& Paths() const { return m_paths; }
    /// The paths given to `AddPath` that were taken as files.
    const std::vector<std::string>& NamedFiles() const { return m_namedFiles; }
    const std::vector<UnreadableFolder>& Unreadable() const { return m_unreadable; }
    /// The folders that were not entered because they are left out, each once.
    const std::vector<std::string>& LeftOut() const { return m_leftOut; }

private:
    /// What one walk over a folder has found, in order.
    struct Walk {
        std::unordered_set<std::string> entered;
        std::vector<CPathStore::Item> files;
    };

    void ReadFolder(const std::string& path, Walk& walk);
    bool IsWanted(const std::string& name) const;

    CollectorOptions m_options;
    std::unordered_set<std::string> m_leftOutPlaces;  // where they really are
    CPathStore m_paths;
    std::vector<std::string> m_namedFiles;
    std::vector<UnreadableFolder> m_unreadable;
    std::vector<std::string> m_leftOut;
};
