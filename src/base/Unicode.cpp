#include "base/Unicode.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include <utf8proc.h>

namespace {

constexpr std::size_t kLongestCharacter = 4;  // bytes of UTF-8

bool IsSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }
bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

/// How many bytes a character takes at the beginning of the bytes; 0 when there is none.
std::size_t Decode(std::string_view bytes, char32_t& character)
{
    utf8proc_int32_t decoded = 0;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(bytes.data()),
                                         static_cast<utf8proc_ssize_t>(bytes.size()), &decoded);
    character = static_cast<char32_t>(decoded);
    return length > 0 ? static_cast<std::size_t>(length) : 0;
}

/// Whether these bytes begin some character that they do not complete.
bool BeginsCharacter(std::string_view bytes)
{
    char32_t character = 0;
    // Which bytes may follow directly depends on the lead byte; 80 or BF always may.
    for (const char filler : {'\x80', '\xBF'}) {
        std::string filled(bytes);
        while (filled.size() < kLongestCharacter) {
            filled += filler;
            if (Decode(filled, character) == filled.size()) return true;
        }
    }
    return false;
}

/// How many bytes at the beginning, which is no character, count as one malformed sequence: as many as could still
/// have become one, as Unicode recommends.
std::size_t MalformedLength(std::string_view bytes)
{
    std::size_t length = 1;
    const std::size_t most = std::min(bytes.size(), kLongestCharacter - 1);
    while (length < most && BeginsCharacter(bytes.substr(0, length + 1))) ++length;
    return length;
}

void AppendUtf16(std::u16string& utf16, char32_t c)
{
    if (c >= 0x10000) {
        utf16 += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
        c = 0xDC00 + ((c - 0x10000) & 0x3FF);
    }
    utf16 += static_cast<char16_t>(c);
}

char32_t OrReplacement(char32_t c) { return IsSurrogate(c) || c > 0x10FFFF ? kReplacementCharacter : c; }

}  // namespace

char32_t NextUtf8(std::string_view bytes, std::size_t& position, bool* valid)
{
    const auto lead = static_cast<unsigned char>(bytes[position]);
    char32_t character = lead;
    const std::string_view rest = bytes.substr(position);
    const std::size_t length = lead < 0x80 ? 1 : Decode(rest, character);
    if (valid) *valid = length > 0;
    position += length > 0 ? length : MalformedLength(rest);
    return length > 0 ? character : kReplacementCharacter;
}

std::size_t CharacterLength(std::string_view bytes)
{
    char32_t character = 0;
    return Decode(bytes, character);
}

std::size_t GraphemeLength(std::string_view bytes)
{
    std::size_t end = 0;
    auto last = static_cast<utf8proc_int32_t>(NextUtf8(bytes, end));
    utf8proc_int32_t state = 0;
    while (end < bytes.size()) {
        std::size_t behind = end;
        const auto next = static_cast<utf8proc_int32_t>(NextUtf8(bytes, behind));
        if (utf8proc_grapheme_break_stateful(last, next, &state)) break;
        last = next;
        end = behind;
    }
    return end;
}

void AppendUtf8(std::string& utf8, char32_t c)
{
    utf8proc_uint8_t bytes[kLongestCharacter];
    const auto length = utf8proc_encode_char(static_cast<utf8proc_int32_t>(OrReplacement(c)), bytes);
    utf8.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

bool IsValidUtf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t length = CharacterLength(bytes);
        if (length == 0) return false;
        bytes.remove_prefix(length);
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

char32_t NextUtf16(std::u16string_view utf16, std::size_t& position)
{
    const char32_t unit = utf16[position++];
    if (!IsHighSurrogate(unit) || position >= utf16.size() || !IsLowSurrogate(utf16[position])) return unit;
    return 0x10000 + ((unit - 0xD800) << 10) + (utf16[position++] - 0xDC00);
}

std::u16string Utf8ToUtf16(std::string_view utf8)
{
    std::u16string result;
    result.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size();) AppendUtf16(result, NextUtf8(utf8, i));
    return result;
}

std::string Utf16ToUtf8(std::u16string_view utf16)
{
    std::string result;
    result.reserve(utf16.size());
    for (std::size_t i = 0; i < utf16.size();) AppendUtf8(result, NextUtf16(utf16, i));
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

std::u16string Utf32ToUtf16(std::u32string_view utf32)
{
    std::u16string result;
    for (const char32_t c : utf32) AppendUtf16(result, OrReplacement(c));
    return result;
}

std::u32string Utf16ToUtf32(std::u16string_view utf16)
{
    std::u32string result;
    for (std::size_t i = 0; i < utf16.size();) result += OrReplacement(NextUtf16(utf16, i));
    return result;
}

std::u16string Utf16FromBytes(std::string_view bytes, bool bigEndian)
{
    std::u16string units;
    units.reserve(bytes.size() / 2 + 1);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto high = static_cast<unsigned char>(bytes[bigEndian ? i : i + 1]);
        const auto low = static_cast<unsigned char>(bytes[bigEndian ? i + 1 : i]);
        units += static_cast<char16_t>(high << 8 | low);
    }
    if (bytes.size() % 2 != 0) units += static_cast<char16_t>(kReplacementCharacter);
    return units;
}

std::string BytesOfUtf16(std::u16string_view utf16, bool bigEndian)
{
    std::string bytes;
    bytes.reserve(2 * utf16.size());
    for (const char16_t unit : utf16) {
        const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

std::string Utf16BytesToUtf8(std::string_view bytes, bool bigEndian)
{
    return Utf16ToUtf8(Utf16FromBytes(bytes, bigEndian));
}

std::string Utf8ToUtf16Bytes(std::string_view utf8, bool bigEndian)
{
    return BytesOfUtf16(Utf8ToUtf16(utf8), bigEndian);
}

std::string Composed(std::string_view utf8)
{
    utf8proc_uint8_t* composed = nullptr;
    const auto length = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(utf8.data()),
                                     static_cast<utf8proc_ssize_t>(utf8.size()), &composed,
                                     static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owned(composed, &std::free);
    if (length < 0) return std::string(utf8);
    return {reinterpret_cast<const char*>(composed), static_cast<std::size_t>(length)};
}

// Most letters are ASCII; they need no table.

char32_t LowerCased(char32_t character)
{
    if (character < 0x80) return character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character;
    return static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(character)));
}

char32_t UpperCased(char32_t character)
{
    constexpr char32_t kSharpS = 0x00DF;
    if (character < 0x80) return character >= 'a' && character <= 'z' ? character - ('a' - 'A') : character;
    if (character == kSharpS) return character;
    return static_cast<char32_t>(utf8proc_toupper(static_cast<utf8proc_int32_t>(character)));
}

Direction DirectionOf(char32_t character)
{
    switch (utf8proc_get_property(static_cast<utf8proc_int32_t>(character))->bidi_class) {
        case UTF8PROC_BIDI_CLASS_L:
            return Direction::LeftToRight;
        case UTF8PROC_BIDI_CLASS_R:
        case UTF8PROC_BIDI_CLASS_AL:
            return Direction::RightToLeft;
        case UTF8PROC_BIDI_CLASS_EN:
        case UTF8PROC_BIDI_CLASS_AN:
            return Direction::Number;
        default:
            return Direction::Neutral;
    }
}

bool IsWhiteSpace(char32_t character)
{
    const auto category = utf8proc_category(static_cast<utf8proc_int32_t>(character));
    const bool separates =
        category == UTF8PROC_CATEGORY_ZS || category == UTF8PROC_CATEGORY_ZL || category == UTF8PROC_CATEGORY_ZP;
    return separates || (character >= 0x09 && character <= 0x0D) || character == 0x85;
}

bool IsLetter(char32_t character)
{
    const auto category = utf8proc_category(static_cast<utf8proc_int32_t>(character));
    return category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_LO;
}

std::u32string WithoutPresentationForm(char32_t character)
{
    const bool isForm = (character >= 0xFB00 && character <= 0xFDFF) || (character >= 0xFE70 && character <= 0xFEFC);
    if (!isForm) return std::u32string(1, character);
    constexpr std::size_t kLongest = 18;  // letters in the longest of them
    utf8proc_int32_t letters[kLongest];
    int lastClass = 0;
    constexpr auto kHow = static_cast<utf8proc_option_t>(UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT);
    const auto length =
        utf8proc_decompose_char(static_cast<utf8proc_int32_t>(character), letters, kLongest, kHow, &lastClass);
    if (length <= 0 || static_cast<std::size_t>(length) > kLongest) return std::u32string(1, character);
    return {letters, letters + length};
}

bool IsPartOfWord(char32_t character)
{
    switch (utf8proc_category(static_cast<utf8proc_int32_t>(character))) {
        case UTF8PROC_CATEGORY_LU:
        case UTF8PROC_CATEGORY_LL:
        case UTF8PROC_CATEGORY_LT:
        case UTF8PROC_CATEGORY_LM:
        case UTF8PROC_CATEGORY_LO:
        case UTF8PROC_CATEGORY_MN:
        case UTF8PROC_CATEGORY_MC:
        case UTF8PROC_CATEGORY_ME:
        case UTF8PROC_CATEGORY_ND:
        case UTF8PROC_CATEGORY_NL:
        case UTF8PROC_CATEGORY_NO:
        case UTF8PROC_CATEGORY_CO:
            return true;
        default:
            return false;
    }
}

std::u32string FoldedForSearch(char32_t character)
{
    constexpr std::size_t kLongest = 32;
    utf8proc_int32_t letters[kLongest];
    int lastClass = 0;
    constexpr auto kHow = static_cast<utf8proc_option_t>(UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT | UTF8PROC_CASEFOLD |
                                                         UTF8PROC_STRIPMARK | UTF8PROC_IGNORE);
    const auto length =
        utf8proc_decompose_char(static_cast<utf8proc_int32_t>(character), letters, kLongest, kHow, &lastClass);
    if (length < 0 || static_cast<std::size_t>(length) > kLongest) return std::u32string(1, character);
    return {letters, letters + length};
}
