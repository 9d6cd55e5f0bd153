#include "protocol/SearchOrder.h"

#include <charconv>
#include <utility>

#include "base/Text.h"
#include "protocol/Json.h"

namespace {

Json TermJson(const SearchTerm& term)
{
    return {{"text", term.text},           {"expression", term.isExpression}, {"wholeWords", term.wholeWords},
            {"matchCase", term.matchCase}, {"lineEnds", term.lineEnds},       {"format", term.format}};
}

SearchTerm TermFrom(const Json& object)
{
    return {.text = TextAt(object, "text"),
            .isExpression = FlagAt(object, "expression"),
            .wholeWords = FlagAt(object, "wholeWords"),
            .matchCase = FlagAt(object, "matchCase", true),
            .lineEnds = FlagAt(object, "lineEnds"),
            .format = TextAt(object, "format")};
}

}  // namespace

std::optional<SearchArea> ParseSearchArea(std::string_view text)
{
    const auto pieces = Split(std::string(text), ",");
    SearchArea area{};
    if (pieces.size() != area.size()) return std::nullopt;
    for (std::size_t i = 0; i < area.size(); ++i) {
        const std::string piece = Trim(pieces[i]);
        const auto [end, error] = std::from_chars(piece.data(), piece.data() + piece.size(), area[i]);
        if (error != std::errc() || end != piece.data() + piece.size()) return std::nullopt;
    }
    if (area[0] > area[2]) std::swap(area[0], area[2]);
    if (area[1] > area[3]) std::swap(area[1], area[3]);
    return area;
}

std::optional<SearchArea> AreaAt(const Json& object)
{
    const Json* const numbers = ArrayAt(object, "area");
    SearchArea area{};
    if (!numbers || numbers->size() != area.size()) return std::nullopt;
    for (std::size_t i = 0; i < area.size(); ++i) {
        if (!(*numbers)[i].is_number()) return std::nullopt;
        area[i] = (*numbers)[i].get<double>();
    }
    return area;
}

Json SearchOrderJson(const SearchOrder& order)
{
    Json object = {{"terms", Json::array()}, {"firstPage", order.firstPage}, {"lastPage", order.lastPage}};
    for (const SearchTerm& term : order.terms) object["terms"].push_back(TermJson(term));
    if (order.area) object["area"] = *order.area;
    if (order.firstMatchOnly) object["firstMatchOnly"] = true;
    if (!order.copyFolder.empty()) object["copyFolder"] = TextFromBytes(order.copyFolder);
    if (!order.reportFile.empty()) object["reportFile"] = TextFromBytes(order.reportFile);
    return object;
}

Expected<SearchOrder> SearchOrderFrom(const Json& object)
{
    SearchOrder order{.terms = {},
                      .firstPage = TextAt(object, "firstPage"),
                      .lastPage = TextAt(object, "lastPage"),
                      .area = AreaAt(object),
                      .firstMatchOnly = FlagAt(object, "firstMatchOnly"),
                      .copyFolder = BytesAt(object, "copyFolder"),
                      .reportFile = BytesAt(object, "reportFile")};
    if (const Json* const terms = ArrayAt(object, "terms"))
        for (const Json& term : *terms) order.terms.push_back(TermFrom(term));
    for (const SearchTerm& term : order.terms)
        if (term.text.empty()) return Failure("The search looks for an empty text.");
    return order;
}

Json FindingsJson(const std::vector<Finding>& findings)
{
    Json array = Json::array();
    for (const Finding& finding : findings)
        array.push_back({{"term", finding.term}, {"page", finding.page}, {"text", finding.text}});
    return array;
}

std::vector<Finding> FindingsFrom(const Json& array)
{
    std::vector<Finding> findings;
    for (const Json& entry : array) {
        Finding finding{CountAt(entry, "term"), CountAt(entry, "page"), TextAt(entry, "text")};
        if (finding.term > 0 && finding.page > 0) findings.push_back(std::move(finding));
    }
    return findings;
}
