// The rules of a search in documents, as they are kept among a step's parameters and in settings files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/PageRange.h"
#include "common/SearchPattern.h"
#include "common/SettingsRecord.h"

/// One rule. Texts are UTF-8, the folder is narrow text.
struct SearchRule {
    bool matchCase = false;
    bool wholeWords = false;  ///< bounded by white space
    bool countLineEnds = false;
    bool useExpression = true;  ///< else literal text
    PageRange pages = {};
    std::string expression = {};
    std::string format = {};
    std::int32_t userData = 0;
    std::string description = {};
    /// As it was read; nobody but who searches needs to understand it.
    std::optional<CSettingsRecord::Value> fontFilter = {};
    SettingsRectangle area = {};
    bool useArea = false;
    std::string actionCode = {};
    bool executeCode = false;
    bool stopOnMatch = false;
    bool copyFile = false;
    std::string copyFolder = {};
    std::string suffix = {};
    std::string prefix = {};
    std::optional<CSettingsRecord> customFields = {};

    [[nodiscard]] static SearchRule Read(const CSettingsRecord& record);
    /// Vertical tabs in the code become blanks.
    [[nodiscard]] CSettingsRecord Write() const;

    [[nodiscard]] SearchItem Item() const { return {expression, useExpression, wholeWords, matchCase}; }
    bool operator==(const SearchRule& other) const { return Write() == other.Write(); }
};

struct SearchSettings {
    std::vector<SearchRule> rules = {};
    bool appendReport = false;
    bool overwriteReport = false;
    bool createReport = true;
    std::string reportFile = {};  ///< of the text report; narrow text

    /// Fails with a sentence when fewer rules are there than the record says: a search by some of them would be
    /// taken for one by all.
    [[nodiscard]] static Expected<SearchSettings> Read(const CSettingsRecord& record);
    [[nodiscard]] CSettingsRecord Write() const;
    bool operator==(const SearchSettings&) const = default;
};

/// The name that is proposed for a new report.
inline constexpr char kProposedReportName[] = "Ferrule Search Report.txt";

/// What keeps the settings from doing what they say, one sentence for each rule, with its number from 1: expressions
/// that do not compile, texts that are empty, copies without folder. `mistakes` make the rule useless, `remarks`
/// leave something out.
struct SearchSettingsReview {
    std::vector<std::string> mistakes, remarks;
};
[[nodiscard]] SearchSettingsReview Review(const SearchSettings& settings);

// Settings files, ".pdfsearch".

/// Fails with a sentence that names the file: missing, unreadable, damaged, of another kind, of a newer version.
[[nodiscard]] Expected<SearchSettings> ReadSearchSettings(const std::string& path);
/// Writes the complete file or leaves the old one. Answers why it could not be written; empty when it was.
[[nodiscard]] std::string WriteSearchSettings(const std::string& path, const SearchSettings& settings);
