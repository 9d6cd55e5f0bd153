#include "ui/GridSearch.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace {

/// An expression that matches the text and nothing else.
std::string Quoted(const std::string& text) { return "\\Q" + ReplaceAll(text, "\\E", "\\E\\\\E\\Q") + "\\E"; }

std::string PatternFor(const CellSearch& search)
{
    std::string pattern = search.expression ? search.text : Quoted(search.text);
    if (!search.wholeCell) return pattern;
    const bool negated = search.expression && pattern.starts_with('!');
    return std::string(negated ? "!" : "") + "\\A(?:" + pattern.substr(negated ? 1 : 0) + ")\\z";
}

}  // namespace

Expected<CCellFinder> CCellFinder::Make(CellSearch search)
{
    CCellFinder finder;
    if (search.text.empty() && (!search.wholeCell || search.expression))
        return Failure("Please enter the text to search for.");
    if (!finder.m_expression.Compile(PatternFor(search),
                                     search.matchCase ? LetterCase::Matters : LetterCase::Ignored))
        return Failure("\"" + search.text + "\" is no regular expression: " + finder.m_expression.Error());
    finder.m_search = std::move(search);
    return finder;
}

std::vector<std::size_t> CCellFinder::Columns(const CGridModel& model) const
{
    if (!m_search.columns.empty()) return m_search.columns;
    std::vector<std::size_t> columns;
    for (std::size_t column = 0; column < model.Columns(); ++column) columns.push_back(column);
    return columns;
}

Expected<bool> CCellFinder::Matches(const std::string& cell) const
{
    if (m_search.text.empty()) return cell.empty();
    return m_expression.IsSatisfiedBy(CSearchedText::FromUtf8(cell));
}

Expected<std::optional<GridCell>> CCellFinder::Next(const CGridRows& rows, GridCell from) const
{
    const std::vector<std::size_t> columns = Columns(rows.Model());
    const std::size_t count = rows.Size();
    if (count == 0) return std::optional<GridCell>();
    // The row of the start comes twice: behind the start first, up to it in the end.
    for (std::size_t step = 0; step <= count; ++step) {
        const std::size_t place = (from.row + step) % count;
        for (const std::size_t column : columns) {
            if ((step == 0 && column <= from.column) || (step == count && column > from.column)) continue;
            const auto matches = Matches(rows.Text(place, column));
            if (!matches) return Failure(matches.Error());
            if (*matches) return std::optional(GridCell{place, column});
        }
    }
    return std::optional<GridCell>();
}

Expected<std::string> CCellFinder::Replaced(const std::string& cell) const
{
    if (m_search.text.empty()) return cell.empty() ? m_search.replacement : cell;
    const CSearchedText text = CSearchedText::FromUtf8(cell);
    if (m_search.expression) return m_expression.ReplaceAll(text, m_search.replacement);
    std::string replaced;
    std::size_t at = 0;
    const auto found = m_expression.ForEachMatch(text, [&](const TextMatch& match) {
        replaced += text.Utf8({at, match.Range().start - at}) + m_search.replacement;
        at = match.Range().End();
        return true;
    });
    if (!found) return Failure(found.Error());
    if (*found == 0) return cell;  // also bytes that are no text stay as they are
    return replaced + text.Utf8({at, text.View().size() - at});
}

Expected<std::vector<CellChange>> CCellFinder::Replacements(const CGridRows& rows) const
{
    if (m_expression.IsNegated()) return Failure("What an expression does not match cannot be replaced.");
    const CGridModel& model = rows.Model();
    std::vector<CellChange> changes;
    for (const std::size_t column : Columns(model)) {
        if (column >= model.Columns() || !model.Column(column).editable) continue;
        for (std::size_t place = 0; place < rows.Size(); ++place) {
            const std::string& cell = rows.Text(place, column);
            auto matches = Matches(cell);
            if (!matches) return Failure(matches.Error());
            if (!*matches) continue;
            auto replaced = Replaced(cell);
            if (!replaced) return Failure(replaced.Error());
            changes.push_back({{rows.Row(place), column}, *std::move(replaced)});
        }
    }
    return changes;
}
