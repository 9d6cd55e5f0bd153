#include "naming/LookupTable.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "common/PairLine.h"
#include "common/SeparatedText.h"

namespace {

/// Puts the entries of all lines into the table; answers how many lines had one.
std::size_t AddLines(std::string_view text, LookupTable& table, PairForm form)
{
    std::size_t lines = 0;
    while (!text.empty()) {
        const std::size_t end = text.find_first_of("\r\n");
        const auto pair = ReadPairLine(text.substr(0, end), form);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!pair || pair->key.empty()) continue;
        table.insert_or_assign(pair->key, pair->value);
        ++lines;
    }
    return lines;
}

std::string OneLine(std::string text)
{
    std::ranges::replace_if(
        text, [](char c) { return c == '\r' || c == '\n'; }, ' ');
    return text;
}

}  // namespace

LookupTable LookupTableFromText(std::string_view utf8)
{
    LookupTable table;
    AddLines(utf8, table, {.openQuoteCounts = false});
    return table;
}

std::string LookupTableText(const LookupTable& table)
{
    std::string text;
    for (const auto& [key, value] : table) text += PairLineText(OneLine(key), OneLine(value)) + "\r\n";
    return text;
}

std::string ImportedLookupTable::Message() const
{
    return FormatText("%d line(s) of text loaded.", static_cast<int>(lines));
}

Expected<ImportedLookupTable> ImportLookupTable(const std::string& path)
{
    const auto text = ReadDecodedText(path);
    if (!text) return Failure(path + ": Cannot open input file. " + text.Error());
    ImportedLookupTable table;
    table.lines = AddLines(text->utf8, table.entries, {.unquoteValue = true, .openQuoteCounts = false});
    return table;
}
