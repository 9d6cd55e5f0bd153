// Which file gets which name, and in which order, so that every name is free when its turn comes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/Expected.h"
#include "common/RenamePlan.h"

/// One file of the list. Paths are bytes.
struct PlannedRename {
    std::string from;
    std::string to = {};       ///< the whole new path; empty: it keeps its name
    std::string problem = {};  ///< why the new name cannot be used, a sentence
    /// Who has to get out of the way first, because both are in a cycle of names; waits at WaitingPlaceOf.
    std::string waits = {};
    /// The new name of an earlier file, when a file system may take the two for one; empty: none.
    std::string sameName = {};
};

class CRenameList {
public:
    /// Names without folder go into `folder`, or stay in the folder of their file when that is empty. Relative paths
    /// of inputs count from `base`. Fails with a sentence when a file is listed twice.
    [[nodiscard]] static Expected<CRenameList> From(const std::vector<RenameLine>& lines, const std::string& base,
                                                    const std::string& folder);

    /// In the order of the list, but whoever has the new name of another file comes before that file.
    const std::vector<PlannedRename>& InOrder() const { return m_files; }
    /// Null for a file that is not listed.
    const PlannedRename* Find(const std::string& path) const;
    /// Whether it is one of the files to rename.
    bool IsInput(const std::string& path) const { return Find(path) != nullptr; }
    /// Whether the order of the files matters.
    bool Depends() const { return m_depends; }

private:
    [[nodiscard]] std::string Add(const std::vector<RenameLine>& lines, const std::string& base,
                                  const std::string& folder);
    void Sort();
    void Follow(std::size_t start, std::vector<int>& states, std::vector<std::size_t>& order);

    std::vector<PlannedRename> m_files;
    std::unordered_map<std::string, std::size_t> m_places;  // by path
    bool m_depends = false;
};
