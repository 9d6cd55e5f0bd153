// The names that a run reads or writes for a file, made comparable.
#pragma once

#include "batchrun/RunSettings.h"
#include "sequence/SequenceFacts.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

/// The base of a file's name with small letters and without the numbers that are put behind it to make it unique:
/// "Report (2) (1).pdf" and "report.txt" are both "report".
[[nodiscard]] std::string ComparableBase(std::string_view fileName);

/// Tells for each input all names that it and its results have or may get, as hashes. Extensions do not count: a
/// converter may choose them.
class CTouchedNames {
public:
    CTouchedNames(const SequenceFacts& facts, const RunSettings& settings);

    /// `folder` with its trailing separator, or empty; `name` without a folder.
    void AppendKeys(const std::string& folder, std::string_view name, std::vector<std::uint64_t>& keys);

private:
    /// A name that something written for a file gets.
    struct Result {
        std::optional<std::string> folder;  // nothing: the folder of the input
        std::string before, after;          // around the input's base name
        std::optional<std::string> name;    // in place of the input's
    };

    void AddOutput(const SequenceFacts& facts, const RunSettings& settings);
    void AddSaveStep(const SaveStepFacts& save, const SequenceFacts& facts, const RunSettings& settings);
    void AddFinalAction(const RunSettings& settings);
    std::uint64_t FolderHash(const std::string& folder);

    std::vector<Result> m_results;
    bool m_anyFolder = false;  // a step of another maker may write under this name wherever it likes
    std::unordered_map<std::string, std::uint64_t> m_folderHashes;
};
