// The names that a run reads or writes for a file, made comparable.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/Work.h"

/// The base of a file's name with small letters and without the numbers that are put behind it to make it unique:
/// "Report (2) (1).pdf" and "report.txt" are both "report".
[[nodiscard]] std::string ComparableBase(std::string_view fileName);

/// Tells for each input all names that it and its results have or may get, as hashes. Extensions do not count: a
/// converter may choose them.
class CTouchedNames {
public:
    /// `wanted`: says what the final action is.
    CTouchedNames(const WorkFacts& facts, const RunDescription& wanted);

    /// `folder` with its trailing separator, or empty; `name` without a folder.
    void AppendKeys(const std::string& folder, std::string_view name, std::vector<std::uint64_t>& keys);

private:
    struct Name {
        ResultName made = {};
        std::optional<std::string> other = {};  // in place of the input's
    };

    std::uint64_t FolderHash(const std::string& folder);

    std::vector<Name> m_names;
    bool m_anyFolder = false;  // something may be written under this name anywhere
    std::unordered_map<std::string, std::uint64_t> m_folderHashes;
};
