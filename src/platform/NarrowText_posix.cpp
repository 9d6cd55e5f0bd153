#include "platform/NarrowText.h"

namespace platform {

std::string Utf8FromNarrow(std::string_view narrow) { return std::string(narrow); }

std::string NarrowFromUtf8(std::string_view utf8) { return std::string(utf8); }

CommandFileText TextForCommandFile(std::string_view utf8)
{
    constexpr unsigned kUtf8 = 65001;
    return {kUtf8, std::string(utf8)};
}

std::filesystem::path StandardPath(const std::string& path) { return path; }

std::string TextOf(const std::filesystem::path& path) { return path.native(); }

}  // namespace platform
