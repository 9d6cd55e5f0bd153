#pragma once

#include <string>

namespace platform {

#ifdef _WIN32
inline constexpr char kLibrarySuffix[] = ".dll";
#else
inline constexpr char kLibrarySuffix[] = ".so";
#endif

using LibraryFunction = void (*)();

/// Loads the library of that absolute path, which then stays until the process ends, and answers its function of that
/// name. Null: `problem` says why. What the library needs is looked for beside it and where the system keeps its own,
/// never in the current folder.
LibraryFunction FunctionOfLibrary(const std::string& path, const char* name, std::string& problem);

}  // namespace platform
