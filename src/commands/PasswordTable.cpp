#include "commands/PasswordTable.h"

#include <map>

#include "base/Names.h"
#include "base/Text.h"
#include "common/PairLine.h"

namespace {

/// Why the line is none; else it is added.
std::string AddLine(std::string_view line, std::map<std::string, std::string>& known, TextPairs& table)
{
    const auto pair = ReadPairLine(line);
    if (!pair) return "has no comma between the name of a file and its password";
    const auto& [name, password] = *pair;
    if (name.empty()) return "has no name of a file in front of the comma";
    if (Trim(password).empty()) return "has no password behind the comma";
    const auto [place, isNew] = known.emplace(MatchedName(name), password);
    if (!isNew && place->second != password) return "has another password for a file that was listed before";
    if (isNew) table.emplace_back(name, password);
    return {};
}

}  // namespace

Expected<TextPairs> PasswordTableFromText(std::string_view text)
{
    TextPairs table;
    std::map<std::string, std::string> known;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (Trim(line).empty()) continue;
        if (const std::string problem = AddLine(line, known, table); !problem.empty())
            return Failure("Line " + std::to_string(number) + " of the password table " + problem + ".");
    }
    return table;
}

std::string PasswordTableText(const TextPairs& table)
{
    std::string text;
    for (const auto& [name, password] : table) text += PairLineText(name, password) + '\n';
    return text;
}
