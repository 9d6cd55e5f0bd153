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

std::string ForEachRename(std::string_view utf8, const std::function<void(const RenameLine&)>& take)
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
        return std::string("Line 1 has to name the columns \"") + kRenamePlanInput + "\" and \"" + kRenamePlanName +
               "\", with a comma, a semicolon or a tab between them.";
    return ForEachSeparated(utf8, {.separator = separator}, [&](SeparatedRecord record) -> std::string {
        if (record.line == 1 || (record.values.size() == 1 && record.values[0].empty())) return {};
        if (record.values.size() <= std::max(columns->path, columns->name))
            return InLine(record.line,
                          "it has fewer values than the heading; leave the new name empty, behind its "
                          "separator, for a file that is to keep its name.");
        if (record.values[columns->path].empty()) return InLine(record.line, "it names no input file.");
        take({std::move(record.values[columns->path]), std::move(record.values[columns->name]), record.line});
        return {};
    });
}
