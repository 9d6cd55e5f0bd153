#ifndef FERRULE_OPENHOST_PROGRAM_MANUAL_H
#define FERRULE_OPENHOST_PROGRAM_MANUAL_H

#include <CLI/CLI.hpp>
#include <string>

namespace openhost {

/// What the program is for: paragraphs.
std::string ProgramDescription();
/// What stands below the options in the help: exit codes, examples, and what a password file is.
std::string HelpFooter();
/// The manual page, in troff, made of the same texts and of the options that the parser has.
std::string ManualPage(const CLI::App& app, const std::string& version);

}  // namespace openhost

#endif
