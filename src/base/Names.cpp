#include "base/Names.h"

#include "base/Text.h"
#include "base/Unicode.h"

namespace {

std::string Converted(std::string_view name, char32_t (*convert)(char32_t))
{
    std::string converted;
    for (std::size_t position = 0; position < name.size();) AppendUtf8(converted, convert(NextUtf8(name, position)));
    return converted;
}

/// Takes the next character, in upper case; a byte that is part of none stands for itself.
char32_t NextCompared(std::string_view& rest)
{
    std::size_t position = 0;
    bool valid = false;
    const char32_t character = NextUtf8(rest, position, &valid);
    const auto byte = static_cast<unsigned char>(rest.front());
    rest.remove_prefix(valid ? position : 1);
    return valid ? UpperCased(character) : byte;
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

bool NameComesBefore(std::string_view a, std::string_view b)
{
    std::string_view restOfA = a, restOfB = b;
    while (!restOfA.empty() && !restOfB.empty()) {
        const char32_t ofA = NextCompared(restOfA), ofB = NextCompared(restOfB);
        if (ofA != ofB) return ofA < ofB;
    }
    if (restOfA.empty() != restOfB.empty()) return restOfA.empty();
    return a < b;
}
