#include "common/Log.h"

#include <algorithm>

#include "base/Text.h"
#include "platform/Clock.h"

namespace {

std::string Indented(int tabs, std::string_view name)
{
    return std::string(static_cast<std::size_t>(std::max(tabs, 0)), '\t').append(name).append(" : ");
}

}  // namespace

std::string OneLogLine(std::string_view text)
{
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
    return line;
}

bool CLogWriter::NameValue(std::string_view name, std::string_view value, int indentTabs)
{
    return Line(OneLogLine(Indented(indentTabs, name).append(value)));
}

bool CLogWriter::NameNumber(std::string_view name, long long number, int indentTabs)
{
    return NameValue(name, std::to_string(number), indentTabs);
}

bool CLogWriter::NameTime(std::string_view name, int indentTabs)
{
    constexpr platform::LocalTime kUnknown{0, 0, 0, -1, -1, -1};
    const auto now = platform::LocalTimeNow().value_or(kUnknown);
    return NameValue(
        name,
        FormatText("%02d/%02d/%d , %02d:%02d:%02d", now.day, now.month, now.year, now.hour, now.minute, now.second),
        indentTabs);
}
