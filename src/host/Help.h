// Shows the help in the user's own programs.
#pragma once

#include <string>

struct AppPaths;

/// What is to be opened for a page of the help, "SecuritySettings.htm#how-it-protects"; an empty topic means the
/// first page: the help file when there is one, else the address of the page beside the plug-in. Empty when there is
/// neither.
[[nodiscard]] std::string HelpPlace(const AppPaths& paths, const std::string& topic);

/// Answers why nothing is shown; empty when it is.
[[nodiscard]] std::string ShowHelp(const AppPaths& paths, const std::string& topic);
