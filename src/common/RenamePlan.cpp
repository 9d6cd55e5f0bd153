#include "common/RenamePlan.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "common/SeparatedText.h"

namespace {

struct PlanColumns {
    std::size_t path = 0, name = 0;
};

std::optional<std::size_t> PlanColumn(const SeparatedRecord& heading, const char* name)
{
    for (std::size_t column = 0; column < heading.values.size(); ++column)
        if (EqualsIgnoreCaseAscii(Trim(heading.values[column]), name)) return column;
    return std::nullopt;
}

std::optional<PlanColumns> ColumnsIn(std::string_view heading, char separator)
{
    const auto records = ParseSeparated(heading, {.separator = separator});
    if (!records || records->empty()) return std::nullopt;
    const auto path = PlanColumn(records->front(), kRenamePlanInput);
    const auto name = PlanColumn(records->front(), kRenamePlanName);
    if (!path || !name) return std::nullopt;
    return PlanColumns{*path, *name};
}

std::string InLine(std::size_t line, const std::string& what) { return "Line " + std::to_string(line) + ": " + what; }

}  // namespace

std::string RenamePlanHeading() { return "\xEF\xBB\xBF" + RenamePlanLine(kRenamePlanInput, kRenamePlanName); }

std::string RenamePlanLine(std::string_view path, std::string_view newName)
{
    return SeparatedValue(path) + ',' + SeparatedValue(newName) + "\r\n";
}

Expected<std::vector<RenameLine>> ParseRenamePlan(std::string_view utf8)
{
    const std::string_view heading = utf8.substr(0, utf8.find_first_of("\r\n"));
    std::optional<PlanColumns> columns;
    char separator = ',';
    for (const char tried : {',', ';', '\t'}) {
        columns = ColumnsIn(heading, tried);
        separator = tried;
        if (columns) break;
    }
    if (!columns)
        return Failure(std::string("Line 1 has to name the columns \"") + kRenamePlanInput + "\" and \"" +
                       kRenamePlanName + "\", with a comma, a semicolon or a tab between them.");
    const auto records = ParseSeparated(utf8, {.separator = separator});
    if (!records) return Failure(records.Error());
    std::vector<RenameLine> lines;
    for (std::size_t at = 1; at < records->size(); ++at) {
        const SeparatedRecord& record = (*records)[at];
        if (record.values.size() == 1 && record.values[0].empty()) continue;
        if (record.values.size() <= std::max(columns->path, columns->name))
            return Failure(InLine(record.line,
                                  "it has fewer values than the heading; leave the new name empty, behind "
                                  "its separator, for a file that is to keep its name."));
        const std::string& path = record.values[columns->path];
        if (path.empty()) return Failure(InLine(record.line, "it names no input file."));
        lines.push_back({path, record.values[columns->name], record.line});
    }
    return lines;
}
