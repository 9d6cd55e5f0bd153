// Collects the input files of a run from files and folders.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

struct CollectorOptions {
    std::vector<std::string> extensions;  // accepted in folders, without dots, in order; "*" accepts every file
    bool subfolders = true;
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
/// reached a second time, over a link, is not entered again.
class CInputCollector {
public:
    explicit CInputCollector(CollectorOptions options);

    /// Adds the files of a folder, or the path itself when it is no folder, whatever its extension and even when
    /// nothing is there.
    void AddPath(const std::string& path);

    const std::vector<std::string>& Paths() const { return m_paths; }
    const std::vector<UnreadableFolder>& Unreadable() const { return m_unreadable; }

private:
    struct Folder {
        std::string path;  // with its trailing separator
        std::vector<std::string> files;
        std::vector<Folder> subfolders;
    };

    Folder ReadFolder(const std::string& path, std::unordered_set<std::string>& entered);
    void AddMatching(const Folder& folder, const std::string& extension);
    void AddOnce(const std::string& path);

    CollectorOptions m_options;
    std::vector<std::string> m_paths;
    std::unordered_set<std::string> m_known;
    std::vector<UnreadableFolder> m_unreadable;
};
