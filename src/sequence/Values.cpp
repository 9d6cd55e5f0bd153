#include "sequence/Values.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

std::string_view CutBetweenCharacters(std::string_view utf8, std::size_t most)
{
    if (utf8.size() <= most) return utf8;
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(utf8[end]) & 0xC0) == 0x80) --end;
    return utf8.substr(0, end);
}

constexpr std::array<signed char, 256> MakeBase64Values()
{
    std::array<signed char, 256> values{};
    values.fill(-1);
    signed char next = 0;
    for (int c = 'A'; c <= 'Z'; ++c) values[static_cast<std::size_t>(c)] = next++;
    for (int c = 'a'; c <= 'z'; ++c) values[static_cast<std::size_t>(c)] = next++;
    for (int c = '0'; c <= '9'; ++c) values[static_cast<std::size_t>(c)] = next++;
    values['+'] = next++;
    values['/'] = next;
    return values;
}

constexpr auto kBase64Values = MakeBase64Values();

bool IsNumber(const std::string& key)
{
    return !key.empty() && std::all_of(key.begin(), key.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string_view WithoutLeadingZeros(std::string_view digits)
{
    const auto first = digits.find_first_not_of('0');
    return first == std::string_view::npos ? std::string_view("0") : digits.substr(first);
}

}  // namespace

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

double LeadingDouble(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number != number) return 0;
    return number;
}

std::optional<WorkflowValue> ItemValue(std::string_view type, std::string_view valueUtf8)
{
    const std::string_view value = CutBetweenCharacters(valueUtf8, kMaxItemValueBytes);
    if (type == "boolean") return value == "true";
    if (type == "text") return WorkflowText{std::string(value)};
    if (type == "string") return WorkflowString{std::string(value)};
    if (type == "atom") return WorkflowAtom{std::string(value)};
    if (type == "null") return WorkflowNull{};
    if (type == "binary") return WorkflowBinary{DecodeBase64(value)};
    if (value.empty()) return std::nullopt;
    if (type == "integer") return ParseDecimal(value);
    if (type == "double") return LeadingDouble(value);
    return std::nullopt;
}

std::string EncodeBase64(const std::string& bytes)
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

bool ComesFirstInCab(const std::string& key, const std::string& other)
{
    const bool number = IsNumber(key), otherNumber = IsNumber(other);
    if (number != otherNumber) return number;
    if (!number) return key < other;
    const std::string_view digits = WithoutLeadingZeros(key), otherDigits = WithoutLeadingZeros(other);
    if (digits.size() != otherDigits.size()) return digits.size() < otherDigits.size();
    return digits != otherDigits ? digits < otherDigits : key < other;
}
