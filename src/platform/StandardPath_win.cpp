#include "platform/StandardPath.h"

#include "platform/WideText_win.h"

namespace platform {

std::filesystem::path StandardPath(const std::string& path) { return WideText(path); }

std::string TextOf(const std::filesystem::path& path) { return NarrowText(path.native()); }

}  // namespace platform
