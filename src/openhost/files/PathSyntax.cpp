#include "openhost/files/PathSyntax.h"

#include <cctype>

namespace openhost {

std::string PercentEncoded(std::string_view path, std::string_view plain)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        const bool stays = byte < 0x80 && (std::isalnum(byte) || plain.find(character) != std::string_view::npos);
        if (stays)
            encoded += character;
        else
            encoded.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return encoded;
}

}  // namespace openhost
