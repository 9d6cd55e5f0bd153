#pragma once

#include <string>

namespace platform {

#ifdef _WIN32
inline constexpr char kSeparator = '\\';
#else
inline constexpr char kSeparator = '/';
#endif

/// Absolute path of the program or library that holds the code at this address; empty on failure.
std::string ModulePath(const void* codeInModule);

/// Absolute path of the running program; empty on failure.
std::string ExecutablePath();

}  // namespace platform
