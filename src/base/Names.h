#pragma once

#include <functional>
#include <string>
#include <string_view>

// Letter case and order of file names in any language, the same on every system.

/// The name with its capitals in lower case. Bytes that are no UTF-8 leave the name to ASCII rules.
[[nodiscard]] std::string LowerCasedName(std::string_view name);

/// The reverse.
[[nodiscard]] std::string UpperCasedName(std::string_view name);

/// The form in which the names that people list are compared with those of files: in lower case, with accents
/// composed, which some systems keep apart.
[[nodiscard]] std::string MatchedName(std::string_view name);

/// The order in which folders are listed: by upper-cased characters, where a byte that is part of none stands for
/// itself, then by bytes. Nothing is kept for it: a folder may hold a million names.
[[nodiscard]] bool NameComesBefore(std::string_view a, std::string_view b);

// Names and paths as text. "Separator" is the system's; on Windows "/" separates as well when a path is taken apart.

#ifdef _WIN32
inline constexpr char kSeparator = '\\';
inline constexpr char kSeparators[] = "\\/";    ///< all that separate when a path is taken apart
inline constexpr bool kNamesIgnoreCase = true;  ///< two letter cases of one name are one file
#else
inline constexpr char kSeparator = '/';
inline constexpr char kSeparators[] = "/";
inline constexpr bool kNamesIgnoreCase = false;
#endif

struct PathParts {
    std::string folder;     ///< with its trailing separator; empty when the path has none
    std::string base;       ///< the name up to its last dot
    std::string extension;  ///< what follows that dot; empty without one
    bool hasDot = false;    ///< tells "name." from "name"
};

/// A dot in a folder's name is no extension; a dot at the start of a name is one like any other.
PathParts SplitPath(std::string_view path);
/// What follows the last separator; the whole path when there is none.
std::string FileName(std::string_view path);
/// Without the dot; empty when the name has none.
std::string Extension(std::string_view path);
/// The folder part with its trailing separator; empty when the path has none.
std::string FolderOf(std::string_view path);
/// An empty path stays empty.
std::string WithTrailingSeparator(std::string_view folder);

/// Tells whether a name is taken; as a rule platform::NameExists.
using NameTest = std::function<bool(const std::string& path)>;

/// The path itself while it is free, else the first free one of "base (n).ext", n = 1, 2, ...
/// The answer holds for the moment of the call; whoever creates the file must still refuse to replace.
std::string UniqueSpaced(const std::string& path, const NameTest& taken);
/// Likewise with "base_n.ext".
std::string UniqueUnderscore(const std::string& path, const NameTest& taken);
/// Likewise with "path_n": the path is taken without looking for an extension.
std::string UniqueNoExtension(const std::string& path, const NameTest& taken);
/// Likewise with " (n)" behind a plain name.
std::string UniqueSuffix(const std::string& name, const NameTest& taken);

/// The path with the prefix that lifts the length limit of Windows file calls. Pure text, the same on every system.
std::string ExtendedLengthPath(std::string_view path);

/// The characters that no file name may hold.
std::string_view InvalidNameCharacters();

/// Whether a path typed by the user is complete: drive letter in upper case, "\", parts without invalid characters,
/// ".pdf" in lower case.
bool IsCompletePdfPath(std::string_view path);
