#include "openhost/commands/LocalNumbers.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

#include "base/Unicode.h"

namespace openhost {

namespace {

/// The zeros of scripts whose ten digits stand in a row.
constexpr char32_t kZeros[] = {U'0',   0x0660, 0x06F0, 0x07C0, 0x0966, 0x09E6, 0x0A66, 0x0AE6, 0x0B66, 0x0BE6,
                               0x0C66, 0x0CE6, 0x0D66, 0x0E50, 0x0ED0, 0x0F20, 0x1040, 0x17E0, 0x1810, 0xFF10};
constexpr std::u32string_view kPercentSigns = U"%\u066A\uFE6A\uFF05";
/// Spaces, apostrophes and marks of direction; between digits they part groups.
constexpr std::u32string_view kFillers =
    U" \t\u00A0\u2009\u202F\u3000'\u2019\u066C\u200E\u200F\u061C\u2066\u2067\u2068\u2069"
    U"\u202A\u202B\u202C\u202D\u202E";

std::optional<char> PlainCharacter(char32_t character)
{
    for (const char32_t zero : kZeros)
        if (character >= zero && character < zero + 10) return static_cast<char>('0' + (character - zero));
    if (character == U'.' || character == 0xFF0E) return '.';
    if (character == U',' || character == 0xFF0C) return ',';
    if (character == 0x066B) return 'd';  // a decimal separator and nothing else
    if (character == U'-' || character == 0x2212) return '-';
    return std::nullopt;
}

/// ASCII digits with ".", "," and "d" in them; nothing for a text that has other characters.
std::optional<std::string> PlainNumber(std::u32string_view text)
{
    std::string plain;
    for (const char32_t character : text) {
        if (kFillers.find(character) != kFillers.npos) continue;
        const auto one = PlainCharacter(character);
        if (!one) return std::nullopt;
        plain += *one;
    }
    return plain;
}

std::string Without(std::string text, char separator)
{
    std::erase(text, separator);
    return text;
}

std::optional<double> Parsed(std::string text, char decimal)
{
    std::ranges::replace(text, decimal, '.');
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || text.back() == '.') return std::nullopt;
    return number;
}

/// Groups have three digits, the first one to three.
bool IsGrouped(const std::string& text, char separator)
{
    std::size_t digits = 0, groups = 0;
    for (const char c : Without(text, '-')) {
        if (c != separator) {
            ++digits;
            continue;
        }
        if (digits == 0 || digits > 3 || (groups > 0 && digits != 3)) return false;
        ++groups;
        digits = 0;
    }
    return groups > 0 && digits == 3;
}

struct Readings {
    std::optional<double> decimal;  // its last separator parts the fraction
    std::optional<double> grouped;  // all separators part thousands
};

Readings ReadingsOf(const std::string& plain)
{
    const bool points = plain.find('.') != plain.npos, commas = plain.find(',') != plain.npos;
    const std::size_t last = plain.find_last_of(".,d");
    if (last == plain.npos) return {Parsed(plain, '.'), {}};
    const char decimal = plain[last];
    if (decimal == 'd' || (points && commas)) {
        const char group = decimal == '.' ? ',' : decimal == ',' ? '.' : points ? '.' : ',';
        const std::string whole = plain.substr(0, last);
        const bool wellGrouped = whole.find(group) == whole.npos || IsGrouped(whole, group);
        return {wellGrouped ? Parsed(Without(whole, group) + plain.substr(last), decimal) : std::nullopt, {}};
    }
    Readings readings;
    if (std::ranges::count(plain, decimal) == 1) readings.decimal = Parsed(plain, decimal);
    if (IsGrouped(plain, decimal) && plain[0] != '0') readings.grouped = Parsed(Without(plain, decimal), '.');
    return readings;
}

}  // namespace

std::optional<double> ReadClearNumber(std::string_view text)
{
    const auto plain = PlainNumber(Utf8ToUtf32(text));
    if (!plain || plain->empty()) return std::nullopt;
    const Readings readings = ReadingsOf(*plain);
    if (!readings.decimal) return readings.grouped;
    // A point is how programs write a fraction; a comma with three digits behind it may be either.
    if (readings.grouped && plain->find(',') != plain->npos) return std::nullopt;
    return readings.decimal;
}

std::optional<int> ReadWholeNumber(std::string_view text)
{
    const auto plain = PlainNumber(Utf8ToUtf32(text));
    if (!plain || plain->find_first_of(".,d") != plain->npos) return std::nullopt;
    const auto number = ReadClearNumber(text);
    if (!number || *number > std::numeric_limits<int>::max() || *number < 0) return std::nullopt;
    return static_cast<int>(*number);
}

std::optional<double> ReadPercentage(std::string_view text, double most)
{
    std::u32string wide = Utf8ToUtf32(text);
    std::erase_if(wide, [](char32_t character) { return kFillers.find(character) != kFillers.npos; });
    const auto isPercent = [](char32_t character) { return kPercentSigns.find(character) != kPercentSigns.npos; };
    if (!wide.empty() && isPercent(wide.front()))
        wide.erase(0, 1);
    else if (!wide.empty() && isPercent(wide.back()))
        wide.pop_back();
    const auto plain = PlainNumber(wide);
    if (!plain || plain->empty()) return std::nullopt;
    const Readings readings = ReadingsOf(*plain);
    for (const auto& reading : {readings.grouped, readings.decimal})
        if (reading && *reading > 0 && *reading <= most) return reading;
    return std::nullopt;
}

}  // namespace openhost
