#pragma once

#include <string>

namespace platform {

#ifdef _WIN32
inline constexpr char kSeparator = '\\';
inline constexpr char kSeparators[] = "\\/";  ///< all that separate when a path is taken apart
inline constexpr char kProgramSuffix[] = ".exe";
inline constexpr bool kNamesIgnoreCase = true;  ///< two letter cases of one name are one file
#else
inline constexpr char kSeparator = '/';
inline constexpr char kSeparators[] = "/";
inline constexpr char kProgramSuffix[] = "";
inline constexpr bool kNamesIgnoreCase = false;
#endif

/// Absolute path of the program or library that holds the code at this address; empty on failure.
std::string ModulePath(const void* codeInModule);

/// Absolute path of the running program; empty on failure.
std::string ExecutablePath();

}  // namespace platform
