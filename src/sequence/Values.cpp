#include "sequence/Values.h"

#include <algorithm>
#include <charconv>

#include "base/Text.h"

namespace {

std::string_view CutBetweenCharacters(std::string_view utf8, std::size_t most)
{
    if (utf8.size() <= most) return utf8;
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(utf8[end]) & 0xC0) == 0x80) --end;
    return utf8.substr(0, end);
}

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

const char* TypeWord(const CSettingsRecord::Value& value)
{
    struct Word {
        const char* operator()(NullValue) const { return "null"; }
        const char* operator()(bool) const { return "boolean"; }
        const char* operator()(std::int32_t) const { return "integer"; }
        const char* operator()(double) const { return "double"; }
        const char* operator()(const std::string&) const { return "string"; }
        const char* operator()(const WideText&) const { return "text"; }
        const char* operator()(const AtomValue&) const { return "atom"; }
        const char* operator()(const BinaryValue&) const { return "binary"; }
        const char* operator()(const CSettingsRecord::Nested&) const { return "cab"; }
    };
    return std::visit(Word{}, value);
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

std::optional<CSettingsRecord::Value> ItemValue(std::string_view type, std::string_view valueUtf8)
{
    const std::string_view value = CutBetweenCharacters(valueUtf8, kMaxItemValueBytes);
    if (type == "boolean") return value == "true";
    if (type == "text") return WideText{std::string(value)};
    if (type == "string") return std::string{std::string(value)};
    if (type == "atom") return AtomValue{std::string(value)};
    if (type == "null") return NullValue{};
    if (type == "binary") return BinaryValue{DecodeBase64(value)};
    if (value.empty()) return std::nullopt;
    if (type == "integer") return ParseDecimal(value);
    if (type == "double") return LeadingDouble(value);
    return std::nullopt;
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
