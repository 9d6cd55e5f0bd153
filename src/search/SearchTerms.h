// Search terms as text files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "search/SearchRules.h"

// Files of terms: a first line that says so, then a line for each rule with expression and description. Separated by
// commas when the name of the file ends in .csv, else by tabs.

/// Answers why the file could not be written; empty when it was. A file that stands there is replaced.
[[nodiscard]] std::string ExportSearchTerms(const std::string& path, const std::vector<SearchRule>& rules);

/// A rule for each line, with the defaults of a rule. Skipped: the first line of an export, lines without expression,
/// values beyond two. Fails with a sentence that names the file.
[[nodiscard]] Expected<std::vector<SearchRule>> ImportSearchTerms(const std::string& path);

/// What people are told after an import.
[[nodiscard]] std::string ImportedTermsText(std::size_t count);
