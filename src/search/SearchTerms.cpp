#include "search/SearchTerms.h"

#include "base/Names.h"
#include "base/Overseer.h"
#include "base/Text.h"
#include "common/SeparatedText.h"
#include "platform/AtomicFile.h"

namespace {

constexpr char kFirstLine[] = "Ferrule Search Terms:";
constexpr char kNothingToSave[] = "There are no search items to save. Please add at least one search item.";
constexpr char kCannotSave[] = "Cannot save search terms as a text file.";
constexpr char kCannotOpen[] = "Cannot open input file.";
constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";
constexpr char kTermsLineEnd[] = "\r\n";

bool IsCsv(const std::string& path) { return EqualsIgnoreCaseAscii(Extension(path), "csv"); }

/// A value between tabs, which has no quotes: an expression says its tabs and line ends by escapes, which match the
/// same.
std::string TabValue(std::string_view text, bool isExpression)
{
    std::string value = ReplaceAll(text, "\t", isExpression ? "\\t" : " ");
    value = ReplaceAll(value, "\r", isExpression ? "\\r" : " ");
    return ReplaceAll(value, "\n", isExpression ? "\\n" : " ");
}

std::string TermsText(const std::vector<SearchRule>& rules, bool csv)
{
    std::string text = std::string(kUtf8Mark) + kFirstLine + kTermsLineEnd;
    for (const SearchRule& rule : rules) {
        text +=
            csv ? SeparatedValue(rule.expression) + ',' + SeparatedValue(rule.description)
                // Kept: the last two characters belong to the form of a line.
                : TabValue(rule.expression, rule.useExpression) + '\t' + TabValue(rule.description, false) + "\t%t";
        text += kTermsLineEnd;
    }
    return text;
}

}  // namespace

std::string ExportSearchTerms(const std::string& path, const std::vector<SearchRule>& rules)
{
    if (rules.empty()) return kNothingToSave;
    const std::string text = TermsText(rules, IsCsv(path));
    const CUnwatched noDocument;
    platform::CAtomicFile file(path, platform::Existing::Replace);
    file.Write(text.data(), text.size());
    const platform::FileResult written = file.Commit();
    return written.Ok() ? std::string() : path + ": " + kCannotSave + ' ' + platform::ErrorText(written.errorNumber);
}

Expected<std::vector<SearchRule>> ImportSearchTerms(const std::string& path)
{
    const auto text = ReadDecodedText(path);
    if (!text) return Failure(path + ": " + kCannotOpen + ' ' + text.Error());
    // Between tabs there are no quotes: they belong to the expressions.
    const bool csv = IsCsv(path);
    auto lines = ParseSeparated(text->utf8, {.separator = csv ? ',' : '\t', .quotes = csv});
    if (!lines) return Failure(path + ": " + lines.Error());
    std::vector<SearchRule> rules;
    for (std::size_t i = 0; i < lines->size(); ++i) {
        auto& line = (*lines)[i].values;
        if (line.front().empty() || (i == 0 && line.front() == kFirstLine)) continue;
        SearchRule rule;
        rule.expression = std::move(line.front());
        if (line.size() > 1) rule.description = std::move(line[1]);
        rules.push_back(std::move(rule));
    }
    return rules;
}

std::string ImportedTermsText(std::size_t count)
{
    return FormatText("Total number of records loaded from file: %d", static_cast<int>(count));
}
