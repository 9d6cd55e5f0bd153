#include "common/LetterCase.h"

#include "common/Encoding.h"
#include "common/Text.h"

namespace {

// Capitals of one alphabet: every `step`-th character from first to last, its small letter `distance` further on.
// The C library's own conversion depends on the locale and knows ASCII only in the one that hosts start with.
struct CapitalRange {
    char32_t first, last;
    unsigned step;
    int distance;
};

constexpr CapitalRange kCapitals[] = {
    {0x0041, 0x005A, 1, 32},    {0x00C0, 0x00D6, 1, 32}, {0x00D8, 0x00DE, 1, 32}, {0x0100, 0x012E, 2, 1},
    {0x0132, 0x0136, 2, 1},     {0x0139, 0x0147, 2, 1},  {0x014A, 0x0176, 2, 1},  {0x0178, 0x0178, 1, -121},
    {0x0179, 0x017D, 2, 1},     {0x01A0, 0x01A0, 1, 1},  {0x01AF, 0x01AF, 1, 1},  {0x01CD, 0x01DB, 2, 1},
    {0x01F8, 0x021E, 2, 1},     {0x0386, 0x0386, 1, 38}, {0x0388, 0x038A, 1, 37}, {0x038C, 0x038C, 1, 64},
    {0x038E, 0x038F, 1, 63},    {0x0391, 0x03A1, 1, 32}, {0x03A3, 0x03AB, 1, 32}, {0x0400, 0x040F, 1, 80},
    {0x0410, 0x042F, 1, 32},    {0x0460, 0x0480, 2, 1},  {0x048A, 0x04BE, 2, 1},  {0x04C0, 0x04C0, 1, 15},
    {0x04C1, 0x04CD, 2, 1},     {0x04D0, 0x052E, 2, 1},  {0x0531, 0x0556, 1, 48}, {0x1E00, 0x1E94, 2, 1},
    {0x1E9E, 0x1E9E, 1, -7615}, {0x1EA0, 0x1EFE, 2, 1},
};

char32_t LowerCased(char32_t character)
{
    for (const CapitalRange& range : kCapitals) {
        if (character < range.first) break;
        if (character > range.last || (character - range.first) % range.step != 0) continue;
        return static_cast<char32_t>(static_cast<int>(character) + range.distance);
    }
    return character;
}

/// The sharp s stays as it is: its capital is hardly ever meant.
char32_t UpperCased(char32_t character)
{
    constexpr char32_t kSharpS = 0x00DF;
    if (character == kSharpS) return character;
    for (const CapitalRange& range : kCapitals) {
        const auto capital = static_cast<char32_t>(static_cast<int>(character) - range.distance);
        if (capital >= range.first && capital <= range.last && (capital - range.first) % range.step == 0)
            return capital;
    }
    return character;
}

std::string Converted(std::string_view name, char32_t (*convert)(char32_t))
{
    std::string converted;
    for (std::size_t position = 0; position < name.size();) AppendUtf8(converted, convert(NextUtf8(name, position)));
    return converted;
}

}  // namespace

std::string LowerCasedName(std::string_view name)
{
    return IsValidUtf8(name) ? Converted(name, LowerCased) : ToLowerAscii(name);
}

std::string UpperCasedName(std::string_view name)
{
    return IsValidUtf8(name) ? Converted(name, UpperCased) : ToUpperAscii(name);
}
