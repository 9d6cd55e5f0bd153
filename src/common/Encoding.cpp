#include "common/Encoding.h"

namespace {

bool IsSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }
bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

char32_t JoinSurrogates(char16_t high, char16_t low) { return 0x10000 + ((high - 0xD800u) << 10) + (low - 0xDC00u); }

// What may follow a lead byte: how many bytes, and the range of the first of them (which keeps out overlong forms,
// surrogates and numbers above U+10FFFF).
struct LeadByte {
    int trailing;
    unsigned char first, last;
};

LeadByte Classify(unsigned char lead)
{
    if (lead >= 0xC2 && lead <= 0xDF) return {1, 0x80, 0xBF};
    if (lead == 0xE0) return {2, 0xA0, 0xBF};
    if (lead == 0xED) return {2, 0x80, 0x9F};
    if (lead >= 0xE1 && lead <= 0xEF) return {2, 0x80, 0xBF};
    if (lead == 0xF0) return {3, 0x90, 0xBF};
    if (lead >= 0xF1 && lead <= 0xF3) return {3, 0x80, 0xBF};
    if (lead == 0xF4) return {3, 0x80, 0x8F};
    return {0, 0, 0};
}

template <class Sink>
void ForEachUtf16(std::u16string_view text, Sink sink)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (!IsSurrogate(unit)) {
            sink(unit);
        } else if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            sink(JoinSurrogates(unit, text[++i]));
        } else {
            sink(kReplacementCharacter);
        }
    }
}

}  // namespace

char32_t NextUtf8(std::string_view bytes, std::size_t& position, bool* valid)
{
    if (valid) *valid = true;
    const auto lead = static_cast<unsigned char>(bytes[position++]);
    if (lead < 0x80) return lead;
    const LeadByte form = Classify(lead);
    char32_t character = form.trailing == 0 ? 0 : lead & (0x3Fu >> form.trailing);
    auto first = form.first, last = form.last;
    int missing = form.trailing;
    for (; missing > 0 && position < bytes.size(); --missing) {
        const auto next = static_cast<unsigned char>(bytes[position]);
        if (next < first || next > last) break;
        character = (character << 6) | (next & 0x3Fu);
        ++position;
        first = 0x80;
        last = 0xBF;
    }
    if (form.trailing > 0 && missing == 0) return character;
    if (valid) *valid = false;
    return kReplacementCharacter;
}

void AppendUtf8(std::string& utf8, char32_t c)
{
    if (IsSurrogate(c) || c > 0x10FFFF) c = kReplacementCharacter;
    const auto trailing = [&](int shift) { utf8 += static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
    if (c < 0x80) {
        utf8 += static_cast<char>(c);
    } else if (c < 0x800) {
        utf8 += static_cast<char>(0xC0 | (c >> 6));
        trailing(0);
    } else if (c < 0x10000) {
        utf8 += static_cast<char>(0xE0 | (c >> 12));
        trailing(6);
        trailing(0);
    } else {
        utf8 += static_cast<char>(0xF0 | (c >> 18));
        trailing(12);
        trailing(6);
        trailing(0);
    }
}

bool IsValidUtf8(std::string_view bytes)
{
    for (std::size_t i = 0; i < bytes.size();) {
        bool valid = false;
        NextUtf8(bytes, i, &valid);
        if (!valid) return false;
    }
    return true;
}

std::string SanitizeUtf8(std::string_view bytes)
{
    std::string clean;
    clean.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) AppendUtf8(clean, NextUtf8(bytes, i));
    return clean;
}

std::u16string Utf8ToUtf16(std::string_view utf8)
{
    std::u16string result;
    result.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size();) {
        const char32_t c = NextUtf8(utf8, i);
        if (c < 0x10000) {
            result += static_cast<char16_t>(c);
        } else {
            result += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            result += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    return result;
}

std::string Utf16ToUtf8(std::u16string_view utf16)
{
    std::string result;
    result.reserve(utf16.size());
    ForEachUtf16(utf16, [&](char32_t c) { AppendUtf8(result, c); });
    return result;
}

std::u32string Utf8ToUtf32(std::string_view utf8)
{
    std::u32string result;
    for (std::size_t i = 0; i < utf8.size();) result += NextUtf8(utf8, i);
    return result;
}

std::string Utf32ToUtf8(std::u32string_view utf32)
{
    std::string result;
    for (const char32_t c : utf32) AppendUtf8(result, c);
    return result;
}

std::string Utf16BytesToUtf8(std::string_view bytes, bool bigEndian)
{
    std::u16string units;
    units.reserve(bytes.size() / 2 + 1);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto high = static_cast<unsigned char>(bytes[bigEndian ? i : i + 1]);
        const auto low = static_cast<unsigned char>(bytes[bigEndian ? i + 1 : i]);
        units += static_cast<char16_t>(high << 8 | low);
    }
    if (bytes.size() % 2 != 0) units += static_cast<char16_t>(kReplacementCharacter);
    return Utf16ToUtf8(units);
}

std::string Utf8ToUtf16Bytes(std::string_view utf8, bool bigEndian)
{
    std::string bytes;
    for (const char16_t unit : Utf8ToUtf16(utf8)) {
        const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}
