#pragma once

#include <string>

namespace platform {

/// Value of an environment variable in the narrow code page; empty when it is absent.
std::string EnvironmentText(const char* name);

/// The current user's folder for application data, created when missing, without a trailing separator.
/// Fails: empty when the folder is neither there nor can be created.
std::string ApplicationDataFolder();

}  // namespace platform
