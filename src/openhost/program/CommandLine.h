#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

namespace openhost {

/// One candidate for each line, UTF-8. Only the line end is cut (line feed, or carriage return and line feed): blanks
/// at either end belong to the password. Empty lines are no candidates; a byte order mark in front is ignored.
std::vector<std::string> PasswordsFromText(std::string_view text);

/// Nothing when the file cannot be read.
std::optional<std::vector<std::string>> ReadPasswordFile(const std::string& path);

/// What the program is for: paragraphs.
std::string ProgramDescription();
/// What stands below the options in the help: exit codes, examples, and what a password file is.
std::string HelpFooter();
/// The manual page, in troff, made of the same texts and of the options that the parser has.
std::string ManualPage(const CLI::App& app, const std::string& version);

/// Runs the program: reads its arguments, loads the plug-ins, runs the host to its end and answers the exit code.
int RunCommandLine(int argumentCount, char** words);

/// The plug-ins of a folder: every file *.api, sorted by name.
std::vector<std::string> PlugInsOfFolder(const std::string& folder);

}  // namespace openhost
