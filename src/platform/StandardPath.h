// Paths as the standard library has them: it takes narrow text on Windows for something else than the code page.
#pragma once

#include <filesystem>
#include <string>

namespace platform {

std::filesystem::path StandardPath(const std::string& path);
std::string TextOf(const std::filesystem::path& path);

}  // namespace platform
