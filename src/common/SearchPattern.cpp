#include "common/SearchPattern.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace {

std::string BoundedByWhiteSpace(const std::string& pattern) { return "(?<=^|\\s)" + pattern + "(?=$|\\s)"; }

std::string BoundedByWords(const std::string& pattern) { return "\\b" + pattern + "\\b"; }

}  // namespace

std::string PatternOf(const SearchItem& item, WordBounds bounds)
{
    const std::string pattern = item.isExpression ? item.text : EscapePattern(item.text);
    if (!item.wholeWords) return pattern;
    // Kept: alternatives are not put into a group, and a "!" is no negation once something stands before it.
    return bounds == WordBounds::WhiteSpace ? BoundedByWhiteSpace(pattern) : BoundedByWords(pattern);
}

Expected<CRegularExpression> CompileItem(const SearchItem& item, WordBounds bounds)
{
    CRegularExpression expression;
    if (expression.Compile(PatternOf(item, bounds), item.matchCase ? LetterCase::Matters : LetterCase::Ignored))
        return expression;
    return Failure("\"" + item.text + "\" is no regular expression: " + expression.Error() + ".");
}

std::string EscapePattern(std::string_view text)
{
    constexpr std::string_view kSpecial = "[]\\^$.|?*+(){}:";
    std::string escaped;
    if (text.starts_with('!')) escaped += '\\';
    for (const char letter : text) {
        if (kSpecial.find(letter) != kSpecial.npos) escaped += '\\';
        escaped += letter;
    }
    return escaped;
}

std::optional<std::string> EmbeddedOption(std::string_view pattern, std::string_view name)
{
    const std::string opening = "(?#" + std::string(name) + "=";
    for (std::size_t at = pattern.find(opening); at != pattern.npos; at = pattern.find(opening, at + 1)) {
        const std::size_t value = at + opening.size();
        const std::size_t end = pattern.find(')', value);
        if (end != pattern.npos && end > value) return std::string(pattern.substr(value, end - value));
    }
    return std::nullopt;
}

std::string MatchForm(std::string_view pattern, std::string_view field)
{
    if (auto embedded = EmbeddedOption(pattern, kFormatOption)) return *embedded;
    return field.empty() ? "\\0" : std::string(field);
}

ExpressionLines ExpressionsFromLines(const SearchItem& each)
{
    ExpressionLines lines;
    std::string_view rest = each.text;
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find("\r\n"));
        rest.remove_prefix(std::min(line.size() + 2, rest.size()));
        if (line.empty()) continue;
        SearchItem item = each;
        item.text = line;
        auto expression = CompileItem(item);
        if (expression)
            lines.expressions.push_back(std::move(*expression));
        else
            lines.problems.push_back(expression.Error());
    }
    return lines;
}
