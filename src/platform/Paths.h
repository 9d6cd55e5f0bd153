#pragma once

#include <string>
#include <vector>

namespace platform {

#ifdef _WIN32
inline constexpr char kProgramSuffix[] = ".exe";
/// A file that anybody has open keeps its name: no other can be put in its place until it is closed.
inline constexpr bool kOpenFilesKeepTheirNames = true;
#else
inline constexpr char kProgramSuffix[] = "";
inline constexpr bool kOpenFilesKeepTheirNames = false;
#endif

/// From the root, without "." and doubled separators, and without one at its end unless it is a root. Going up by
/// ".." means what it means to the system: on Windows it takes a name away; elsewhere it leads out of what a link
/// leads to, so the links are resolved, and a path that does not exist stays as it is.
std::string AbsolutePath(const std::string& path);

/// Absolute path of the program or library that holds the code at this address; empty on failure.
std::string ModulePath(const void* codeInModule);

/// Absolute path of the running program; empty on failure.
std::string ExecutablePath();

/// Value of an environment variable in the narrow code page; empty when it is absent.
std::string EnvironmentText(const char* name);

/// The variable that moves the folder below for a process and its children.
#ifdef _WIN32
inline constexpr char kApplicationDataVariable[] = "APPDATA";
#else
inline constexpr char kApplicationDataVariable[] = "XDG_CONFIG_HOME";
#endif

/// The current user's folder for what can be made again at any time, without a trailing separator; not created. Moved
/// by XDG_CACHE_HOME, on Windows by LOCALAPPDATA. Fails: empty.
std::string UserCacheFolder();

/// The current user's folder for application data, created when missing, without a trailing separator.
/// Fails: empty when the folder is neither there nor can be created.
std::string ApplicationDataFolder();

/// The folders that hold what programs keep for the current user, and documents: of application data, of programs and
/// of documents on Windows, of configuration and of data elsewhere. Without separators at the end; nothing is
/// created.
std::vector<std::string> UserFolders();

}  // namespace platform
