#include "base/Names.h"

#include <algorithm>

#include "base/Text.h"
#include "base/Unicode.h"

namespace {

std::string Converted(std::string_view name, char32_t (*convert)(char32_t))
{
    std::string converted;
    converted.reserve(name.size());
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

std::string MatchedName(std::string_view name) { return Composed(LowerCasedName(name)); }

bool NameComesBefore(std::string_view a, std::string_view b)
{
    // Names of one folder often begin alike.
    std::size_t alike = 0;
    const std::size_t shorter = std::min(a.size(), b.size());
    while (alike < shorter && a[alike] == b[alike] && static_cast<unsigned char>(a[alike]) < 0x80) ++alike;
    std::string_view restOfA = a.substr(alike), restOfB = b.substr(alike);
    while (!restOfA.empty() && !restOfB.empty()) {
        const char32_t ofA = NextCompared(restOfA), ofB = NextCompared(restOfB);
        if (ofA != ofB) return ofA < ofB;
    }
    if (restOfA.empty() != restOfB.empty()) return restOfA.empty();
    return a < b;
}

namespace {

std::size_t FolderLength(std::string_view path) { return path.find_last_of(kSeparators) + 1; }

// Counts up until the name is free; the pattern is "head", mark, number, tail.
std::string FirstFree(const std::string& path, const std::string& head, std::string_view before,
                      std::string_view behind, const NameTest& taken)
{
    if (!taken(path)) return path;
    for (unsigned long long n = 1;; ++n) {
        std::string candidate = head;
        candidate.append(before).append(std::to_string(n)).append(behind);
        if (!taken(candidate)) return candidate;
    }
}

std::string ExtensionWithDot(const PathParts& parts) { return parts.hasDot ? "." + parts.extension : std::string(); }

bool IsPathPart(std::string_view part)
{
    return !part.empty() && part.find_first_of(":*?<>|\"") == std::string_view::npos;
}

}  // namespace

PathParts SplitPath(std::string_view path)
{
    PathParts parts;
    const auto folderLength = FolderLength(path);
    parts.folder = path.substr(0, folderLength);
    const auto name = path.substr(folderLength);
    const auto dot = name.rfind('.');
    parts.hasDot = dot != std::string_view::npos;
    parts.base = name.substr(0, dot);
    if (parts.hasDot) parts.extension = name.substr(dot + 1);
    return parts;
}

std::string FileName(std::string_view path) { return std::string(path.substr(FolderLength(path))); }

std::string Extension(std::string_view path) { return SplitPath(path).extension; }

std::string FolderOf(std::string_view path) { return std::string(path.substr(0, FolderLength(path))); }

std::string WithTrailingSeparator(std::string_view folder)
{
    std::string result(folder);
    if (!result.empty() && std::string_view(kSeparators).find(result.back()) == std::string_view::npos)
        result += kSeparator;
    return result;
}

std::string UniqueSpaced(const std::string& path, const NameTest& taken)
{
    const auto parts = SplitPath(path);
    return FirstFree(path, parts.folder + parts.base, " (", ")" + ExtensionWithDot(parts), taken);
}

std::string UniqueUnderscore(const std::string& path, const NameTest& taken)
{
    const auto parts = SplitPath(path);
    return FirstFree(path, parts.folder + parts.base, "_", ExtensionWithDot(parts), taken);
}

std::string UniqueNoExtension(const std::string& path, const NameTest& taken)
{
    return FirstFree(path, path, "_", "", taken);
}

std::string UniqueSuffix(const std::string& name, const NameTest& taken)
{
    return FirstFree(name, name, " (", ")", taken);
}

std::string ExtendedLengthPath(std::string_view path)
{
    constexpr std::string_view kPrefix = "\\\\?\\";
    if (path.starts_with(kPrefix)) return std::string(path);
    if (path.starts_with("\\\\")) return std::string(kPrefix).append("UNC").append(path.substr(1));
    return std::string(kPrefix).append(path);
}

std::string_view InvalidNameCharacters() { return "\"/*?<>:|\t\n\r"; }

bool IsCompletePdfPath(std::string_view path)
{
    constexpr std::string_view kEnding = ".pdf";
    if (path.size() < 2 || path[0] < 'A' || path[0] > 'Z' || path[1] != ':') return false;
    path.remove_prefix(2);
    if (!path.ends_with(kEnding)) return false;
    path.remove_suffix(kEnding.size());
    if (!path.starts_with('\\')) return false;
    // A part may itself hold backslashes, so what counts is one "\" in front, something behind it, and no bad
    // character.
    return IsPathPart(path.substr(1));
}
