#pragma once

#include <string>

namespace platform {

/// Value of an environment variable in the narrow code page; empty when it is absent.
std::string EnvironmentText(const char* name);

/// The variable that moves the folder below for a process and its children.
#ifdef _WIN32
inline constexpr char kApplicationDataVariable[] = "APPDATA";
#else
inline constexpr char kApplicationDataVariable[] = "XDG_CONFIG_HOME";
#endif

/// The current user's folder for application data, created when missing, without a trailing separator.
/// Fails: empty when the folder is neither there nor can be created.
std::string ApplicationDataFolder();

}  // namespace platform
