#include "openhost/program/PasswordFile.h"

#include <fstream>
#include <iterator>

namespace openhost {

std::vector<std::string> PasswordsFromText(std::string_view text)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
    std::vector<std::string> passwords;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (!line.empty()) passwords.emplace_back(line);
    }
    return passwords;
}

std::optional<std::vector<std::string>> ReadPasswordFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    try {
        return PasswordsFromText(
            std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>()));
    } catch (const std::ios_base::failure&) {  // reading fails half-way, or it is a folder
        return std::nullopt;
    }
}

}  // namespace openhost
