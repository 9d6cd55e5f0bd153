// Which file gets which name, and in which order, so that every name is free when its turn comes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
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

/// Holds little more than the texts of the list, which may be that of a million files.
class CRenameList {
public:
    /// `utf8`: as ForEachRename takes it. Relative paths of inputs count from `base`. Fails with a sentence, also
    /// when a file is listed twice.
    [[nodiscard]] static Expected<CRenameList> From(std::string_view utf8, const std::string& base);

    /// From now on names without folder go into `folder`, or stay in the folder of their file when that is empty, as
    /// at the beginning.
    void GoInto(const std::string& folder);

    std::size_t Size() const { return m_lines.size(); }
    /// In the order of the list, but whoever has the new name of another file comes before that file.
    PlannedRename InOrder(std::size_t place) const { return Rename(m_order[place]); }
    /// Nothing for a file that is not listed.
    std::optional<PlannedRename> Find(const std::string& path) const;
    /// Whether it is one of the files to rename.
    bool IsInput(const std::string& path) const { return LineOf(path).has_value(); }
    /// Whether the order of the files matters.
    bool Depends() const { return m_depends; }

private:
    using LineNumber = std::uint32_t;
    struct Line {
        std::size_t text;  // where the path begins, in the form that the system takes; the new name follows it
        std::uint32_t pathLength, nameLength;
        std::uint32_t line;  // of the list
        bool isPath;         // the new name is one, and not a name alone
    };
    /// Finds lines by a text of theirs; lines of one hash stand in order.
    using Hashes = std::vector<std::pair<std::size_t, LineNumber>>;

    void Add(const RenameLine& line, const std::string& base);
    std::string ListedTwice() const;
    PlannedRename Rename(LineNumber line) const;
    std::string PathOf(LineNumber line) const;
    std::optional<LineNumber> LineOf(const std::string& path) const;
    void FindSameNames();
    void Sort();
    void Follow(LineNumber start, std::vector<char>& states);

    std::string m_folder;
    std::string m_texts;
    std::vector<Line> m_lines;
    Hashes m_byPath;
    std::vector<LineNumber> m_order;
    std::unordered_map<LineNumber, LineNumber> m_waits, m_sameNames;  // see PlannedRename
    bool m_depends = false;
};
