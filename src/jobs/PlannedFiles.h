// The input files of a planned run, and which of them collide in the names that the run reads or writes for them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/InputCollector.h"
#include "engine/Work.h"
#include "protocol/FileRecord.h"

// The names that a run reads or writes for a file, made comparable.

/// The base of a file's name with small letters and without the numbers that are put behind it to make it unique:
/// "Report (2) (1).pdf" and "report.txt" are both "report".
[[nodiscard]] std::string ComparableBase(std::string_view fileName);

/// Tells for each input all names that it and its results have or may get, as hashes. Extensions do not count: a
/// converter may choose them.
class CTouchedNames {
public:
    /// `wanted`: says what the final action is.
    CTouchedNames(const WorkFacts& facts, const RunDescription& wanted);

    /// `folder` with its trailing separator, or empty; `name` without a folder. `isLink`: whether that is one.
    void AppendKeys(const std::string& folder, std::string_view name, bool isLink, std::vector<std::uint64_t>& keys);

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

/// Puts files that share a key into one group, also through others. Keys are hashes: two that meet by chance put
/// files together that could have stayed apart, which does no harm.
class CCollisionGroups {
public:
    void Add(std::uint64_t key, std::uint32_t file) { m_entries.push_back({key, file}); }

    /// The group of each file: 0 for one that is alone, else from 1 in the order of the groups' first files. Once.
    [[nodiscard]] std::vector<std::uint32_t> Groups(std::size_t files);

private:
#pragma pack(push, 4)
    struct Entry {
        std::uint64_t key;
        std::uint32_t file;
    };
#pragma pack(pop)

    std::vector<Entry> m_entries;
};

/// Made for a million files: each costs a few dozen bytes beside its name.
class CPlannedFiles {
public:
    /// Leaves out files that were changed less than `minAgeSeconds` ago.
    CPlannedFiles(CInputCollector inputs, double minAgeSeconds);

    std::size_t Count() const { return m_files.size(); }
    std::size_t TooYoung() const { return m_tooYoung; }

    /// Visits the files in order.
    void ForEach(CTouchedNames& names, const std::function<void(const PlannedFile&)>& visit) const;

private:
    struct File {
        std::uint64_t size;
        std::int64_t modifiedNanoseconds;
        std::uint64_t identity;  // equal for all names of one file; 0 when there is no file
        std::uint32_t index;     // in the list of inputs
        bool isLink;
    };

    std::vector<std::uint32_t> Groups(CTouchedNames& names) const;

    CInputCollector m_inputs;
    std::vector<File> m_files;
    std::size_t m_tooYoung = 0;
};
