#include "openhost/values/Encoding.h"

#include <optional>

#include "platform/CodePage.h"

namespace openhost {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kEscapedByte = 0xDC00;  // plus the byte, 80..FF

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
bool IsSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }

void AppendUtf16(std::u16string& text, char32_t character)
{
    if (character < 0x10000) {
        text.push_back(static_cast<char16_t>(character));
        return;
    }
    const char32_t rest = character - 0x10000;
    text.push_back(static_cast<char16_t>(0xD800 + (rest >> 10)));
    text.push_back(static_cast<char16_t>(0xDC00 + (rest & 0x3FF)));
}

void AppendUtf8(std::string& bytes, char32_t character)
{
    const auto add = [&](char32_t byte) { bytes.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        add(character);
    } else if (character < 0x800) {
        add(0xC0 | (character >> 6));
        add(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        add(0xE0 | (character >> 12));
        add(0x80 | ((character >> 6) & 0x3F));
        add(0x80 | (character & 0x3F));
    } else {
        add(0xF0 | (character >> 18));
        add(0x80 | ((character >> 12) & 0x3F));
        add(0x80 | ((character >> 6) & 0x3F));
        add(0x80 | (character & 0x3F));
    }
}

/// The character at `at`, which moves behind it; nothing (and `at` stays) when the bytes are not valid UTF-8.
std::optional<char32_t> NextUtf8(std::string_view bytes, std::size_t& at)
{
    const auto lead = static_cast<unsigned char>(bytes[at]);
    if (lead < 0x80) {
        ++at;
        return lead;
    }
    const std::size_t length = lead >= 0xF0 && lead < 0xF5   ? 4
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                                                             : 0;
    if (length == 0 || bytes.size() - at < length) return std::nullopt;
    char32_t character = lead & (0xFF >> (length + 1));
    for (std::size_t index = 1; index < length; ++index) {
        const auto byte = static_cast<unsigned char>(bytes[at + index]);
        if ((byte & 0xC0) != 0x80) return std::nullopt;
        character = (character << 6) | (byte & 0x3F);
    }
    const bool overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    if (overlong || IsSurrogate(character) || character > 0x10FFFF) return std::nullopt;
    at += length;
    return character;
}

/// The character at `at`, which moves behind it; a lone surrogate comes back as it is.
char32_t NextUtf16(std::u16string_view text, std::size_t& at)
{
    const char32_t unit = text[at++];
    if (!IsHighSurrogate(unit) || at >= text.size() || !IsLowSurrogate(text[at])) return unit;
    return 0x10000 + ((unit - 0xD800) << 10) + (text[at++] - 0xDC00);
}

template <class Unreadable>
std::u16string DecodeUtf8(std::string_view bytes, Unreadable unreadable)
{
    std::u16string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size();) {
        if (const auto character = NextUtf8(bytes, at))
            AppendUtf16(text, *character);
        else
            text.push_back(unreadable(static_cast<unsigned char>(bytes[at++])));
    }
    return text;
}

// PDFDocEncoding is Latin-1 but for these two ranges and the holes 7F, 9F and AD.
constexpr char16_t kPdfDoc18[] = {0x02D8, 0x02C7, 0x02C6, 0x02D9, 0x02DD, 0x02DB, 0x02DA, 0x02DC};
constexpr char16_t kPdfDoc80[] = {0x2022, 0x2020, 0x2021, 0x2026, 0x2014, 0x2013, 0x0192, 0x2044, 0x2039,
                                  0x203A, 0x2212, 0x2030, 0x201E, 0x201C, 0x201D, 0x2018, 0x2019, 0x201A,
                                  0x2122, 0xFB01, 0xFB02, 0x0141, 0x0152, 0x0160, 0x0178, 0x017D, 0x0131,
                                  0x0142, 0x0153, 0x0161, 0x017E, 0xFFFD, 0x20AC};

char16_t FromPdfDoc(unsigned char byte)
{
    if (byte >= 0x18 && byte < 0x20) return kPdfDoc18[byte - 0x18];
    if (byte >= 0x80 && byte <= 0xA0) return kPdfDoc80[byte - 0x80];
    return byte == 0x7F || byte == 0xAD ? 0xFFFD : byte;
}

std::optional<char> ToPdfDoc(char16_t unit)
{
    if (unit == 0xFFFD) return std::nullopt;
    if (unit < 0x100 && FromPdfDoc(static_cast<unsigned char>(unit)) == unit) return static_cast<char>(unit);
    for (unsigned byte = 0x18; byte <= 0xA0; ++byte)
        if (FromPdfDoc(static_cast<unsigned char>(byte)) == unit) return static_cast<char>(byte);
    return std::nullopt;
}

bool LooksMarked(std::string_view bytes)
{
    return bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xEF\xBB\xBF");
}

}  // namespace

std::u16string Utf16FromUtf8(std::string_view utf8)
{
    return DecodeUtf8(utf8, [](unsigned char) { return static_cast<char16_t>(kReplacement); });
}

std::string Utf8FromUtf16(std::u16string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t character = NextUtf16(text, at);
        AppendUtf8(bytes, IsSurrogate(character) ? kReplacement : character);
    }
    return bytes;
}

std::u16string Utf16FromHost(std::string_view bytes)
{
    return DecodeUtf8(platform::Utf8FromNarrow(bytes),
                      [](unsigned char byte) { return static_cast<char16_t>(kEscapedByte + byte); });
}

std::string HostFromUtf16(std::u16string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t character = NextUtf16(text, at);
        if (character >= kEscapedByte + 0x80 && character <= kEscapedByte + 0xFF)
            bytes.push_back(static_cast<char>(character - kEscapedByte));
        else
            AppendUtf8(bytes, IsSurrogate(character) ? kReplacement : character);
    }
    return platform::NarrowFromUtf8(bytes);
}

std::u16string Utf16FromUtf32(std::u32string_view text)
{
    std::u16string result;
    for (const char32_t character : text)
        AppendUtf16(result, IsSurrogate(character) || character > 0x10FFFF ? kReplacement : character);
    return result;
}

std::u32string Utf32FromUtf16(std::u16string_view text)
{
    std::u32string result;
    for (std::size_t at = 0; at < text.size();) {
        const char32_t character = NextUtf16(text, at);
        result.push_back(IsSurrogate(character) ? kReplacement : character);
    }
    return result;
}

std::u16string Utf16FromPdText(std::string_view bytes)
{
    std::u16string text;
    if (bytes.starts_with("\xEF\xBB\xBF")) return Utf16FromUtf8(bytes.substr(3));
    if (!bytes.starts_with("\xFE\xFF")) {
        for (const char byte : bytes) text.push_back(FromPdfDoc(static_cast<unsigned char>(byte)));
        return text;
    }
    for (std::size_t at = 2; at + 1 < bytes.size(); at += 2)
        text.push_back(static_cast<char16_t>((static_cast<unsigned char>(bytes[at]) << 8) |
                                             static_cast<unsigned char>(bytes[at + 1])));
    if (bytes.size() % 2 != 0) text.push_back(static_cast<char16_t>(kReplacement));
    return text;
}

std::string PdTextFromUtf16(std::u16string_view text)
{
    std::string bytes;
    for (const char16_t unit : text) {
        const auto byte = ToPdfDoc(unit);
        if (!byte) break;
        bytes.push_back(*byte);
    }
    if (bytes.size() == text.size() && !LooksMarked(bytes)) return bytes;
    bytes = "\xFE\xFF";
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<char>(unit >> 8));
        bytes.push_back(static_cast<char>(unit & 0xFF));
    }
    return bytes;
}

bool IsValidUtf8(std::string_view bytes)
{
    for (std::size_t at = 0; at < bytes.size();)
        if (!NextUtf8(bytes, at)) return false;
    return true;
}

}  // namespace openhost
