#pragma once

#include <string>

namespace platform {

/// How a system that hands a program one line of text, instead of a list, writes the argument there.
enum class ShellArgument {
    Quoted,  ///< in double quotes, so that it arrives as one
    AsItIs   ///< blanks in it make several arguments
};

/// Starts a program with one argument and does not wait for its end. Its standard streams lead nowhere.
/// `program` may stand in double quotes; without a separator it is looked up like the shell does.
/// Answers whether the program started; nothing is left to clean up.
///
/// Where programs get a list of arguments, blanks and quotes always stay part of the one argument. On Windows it is
/// what `passed` makes of it; the system's shell starts what is no program, too, with the program that belongs to it,
/// and the window is shown.
bool OpenWithShell(const std::string& program, const std::string& argument,
                   ShellArgument passed = ShellArgument::Quoted);

/// Shows a document, or a page by its address, with the user's own program for such. False when none could be
/// started.
bool OpenDocument(const std::string& pathOrAddress);

/// Whether OpenWithShell would find the program; true where only the system's shell can tell.
bool ProgramMayExist(const std::string& program);

}  // namespace platform
