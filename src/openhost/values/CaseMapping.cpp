#include "openhost/values/Encoding.h"

namespace openhost {

namespace {

/// Capital letters first..last, every `step`-th of them, whose small letters stand `distance` behind.
struct CaseRange {
    char32_t first;
    char32_t last;
    unsigned step;
    unsigned distance;
};

constexpr CaseRange kRanges[] = {
    {U'A', U'Z', 1, 32},     {0x00C0, 0x00D6, 1, 32}, {0x00D8, 0x00DE, 1, 32}, {0x0100, 0x012E, 2, 1},
    {0x0132, 0x0136, 2, 1},  {0x0139, 0x0147, 2, 1},  {0x014A, 0x0176, 2, 1},  {0x0179, 0x017D, 2, 1},
    {0x0386, 0x0386, 1, 38}, {0x0388, 0x038A, 1, 37}, {0x038C, 0x038C, 1, 64}, {0x038E, 0x038F, 1, 63},
    {0x0391, 0x03A1, 1, 32}, {0x03A3, 0x03AB, 1, 32}, {0x0400, 0x040F, 1, 80}, {0x0410, 0x042F, 1, 32},
    {0x0460, 0x0480, 2, 1},  {0x048A, 0x04BE, 2, 1},  {0x1E00, 0x1E94, 2, 1},  {0x1EA0, 0x1EFE, 2, 1},
    {0xFF21, 0xFF3A, 1, 32},
};

}  // namespace

char32_t LowerOf(char32_t character)
{
    if (character == 0x0178) return 0x00FF;
    for (const CaseRange& range : kRanges)
        if (character >= range.first && character <= range.last && (character - range.first) % range.step == 0)
            return character + range.distance;
    return character;
}

char32_t UpperOf(char32_t character)
{
    if (character == 0x00FF) return 0x0178;
    if (character == 0x03C2) return 0x03A3;  // the form of sigma that ends words
    for (const CaseRange& range : kRanges) {
        const char32_t first = range.first + range.distance;
        if (character >= first && character <= range.last + range.distance && (character - first) % range.step == 0)
            return character - range.distance;
    }
    return character;
}

}  // namespace openhost
