#pragma once

#include <string>

namespace platform {

/// Starts a program with one argument (blanks and quotes in it stay part of it) and does not wait for its end.
/// Its standard streams lead nowhere.
/// `program` may stand in double quotes; without a separator it is looked up like the shell does.
/// Answers whether the program started; nothing is left to clean up.
bool OpenWithShell(const std::string& program, const std::string& argument);

}  // namespace platform
