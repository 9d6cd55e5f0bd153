#include "common/PairLine.h"

#include "base/Text.h"

namespace {

std::size_t SeparatorOf(std::string_view line, bool openQuoteCounts)
{
    bool quoted = false;
    std::size_t firstComma = std::string_view::npos;
    for (std::size_t place = 0; place < line.size(); ++place) {
        if (line[place] == '"') quoted = !quoted;
        if (line[place] != ',') continue;
        if (!quoted) return place;
        if (firstComma == std::string_view::npos) firstComma = place;
    }
    return quoted && !openQuoteCounts ? firstComma : std::string_view::npos;
}

bool StandsInQuotes(std::string_view text) { return text.size() > 1 && text.front() == '"' && text.back() == '"'; }

std::string WithoutQuotes(const std::string& text)
{
    return StandsInQuotes(text) ? text.substr(1, text.size() - 2) : text;
}

}  // namespace

std::optional<PairLine> ReadPairLine(std::string_view line, PairForm form)
{
    const std::size_t comma = SeparatorOf(line, form.openQuoteCounts);
    if (comma == std::string_view::npos) return std::nullopt;
    PairLine pair{.key = WithoutQuotes(Trim(line.substr(0, comma))), .value = TrimLeft(line.substr(comma + 1))};
    if (form.unquoteValue && StandsInQuotes(Trim(pair.value)))
        pair.value = ReplaceAll(WithoutQuotes(Trim(pair.value)), "\"\"", "\"");
    return pair;
}

std::string PairLineText(const std::string& key, const std::string& value)
{
    const bool quotes = key.find(',') != std::string::npos || Trim(key) != key || StandsInQuotes(key);
    return (quotes ? '"' + key + '"' : key) + ", " + value;
}
