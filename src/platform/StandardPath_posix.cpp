#include "platform/StandardPath.h"

namespace platform {

std::filesystem::path StandardPath(const std::string& path) { return path; }

std::string TextOf(const std::filesystem::path& path) { return path.native(); }

}  // namespace platform
