#include "base/Base64.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace {

constexpr std::array<int, 256> MakeBase64Values()
{
    std::array<int, 256> values{};
    values.fill(-1);
    int next = 0;
    for (int c = 'A'; c <= 'Z'; ++c) values[static_cast<std::size_t>(c)] = next++;
    for (int c = 'a'; c <= 'z'; ++c) values[static_cast<std::size_t>(c)] = next++;
    for (int c = '0'; c <= '9'; ++c) values[static_cast<std::size_t>(c)] = next++;
    values['+'] = next++;
    values['/'] = next;
    return values;
}

constexpr auto kBase64Values = MakeBase64Values();

}  // namespace

std::string EncodeBase64(std::string_view bytes)
{
    constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = group << 8 | (i < count ? static_cast<unsigned char>(bytes[at + i]) : 0u);
        for (std::size_t i = 0; i < 4; ++i) text += i <= count ? kAlphabet[group >> (18 - 6 * i) & 0x3F] : '=';
    }
    return text;
}

std::string DecodeBase64(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    unsigned group = 0;
    int bits = 0;
    for (const char c : text) {
        const int value = kBase64Values[static_cast<unsigned char>(c)];
        if (value < 0) continue;
        group = group << 6 | static_cast<unsigned>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(group >> bits & 0xFF);
        }
    }
    return bytes;
}
