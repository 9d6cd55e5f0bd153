#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

/// Narrow text, as paths and names are, is UTF-8 in our own programs. On Windows a process that others have made, as
/// a host may be, lives in the code page of the machine: these are the way between narrow text and UTF-8 there. Where
/// narrow text is UTF-8 the bytes stay as they are, valid or not.
///
/// Bytes without a meaning become U+FFFD, and '?' stands for what the code page does not hold: no file has either in
/// its name.
std::string Utf8FromNarrow(std::string_view narrow);
std::string NarrowFromUtf8(std::string_view utf8);

/// Text for a file of commands, in the code page that the system's command interpreter reads such files in; in UTF-8
/// where that lacks a character.
struct CommandFileText {
    unsigned codePage = 0;
    std::string bytes;
};
CommandFileText TextForCommandFile(std::string_view utf8);

// Paths as the standard library has them: it takes narrow text on Windows for something else than the code page.

std::filesystem::path StandardPath(const std::string& path);
std::string TextOf(const std::filesystem::path& path);

}  // namespace platform
