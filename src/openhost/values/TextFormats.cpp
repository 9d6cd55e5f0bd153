#include "openhost/values/TextFormats.h"

#include <bit>
#include <cstring>

#include "base/Unicode.h"
#include "openhost/core/Raise.h"

namespace openhost {

namespace {

/// Bytes of one unit; raises for an unknown format.
std::size_t WidthOf(ASUnicodeFormat format)
{
    switch (format) {
        case kUTF8:
            return 1;
        case kUTF16BigEndian:
        case kUTF16HostEndian:
            return 2;
        case kUTF32BigEndian:
        case kUTF32HostEndian:
            return 4;
        default:
            Raise(genErrBadParm, "unknown Unicode format");
    }
}

bool HighestByteFirst(ASUnicodeFormat format)
{
    const bool host = format == kUTF16HostEndian || format == kUTF32HostEndian;
    return !host || std::endian::native == std::endian::big;
}

std::size_t LengthToZero(const char* bytes, std::size_t width)
{
    constexpr char kZero[4] = {};
    std::size_t length = 0;
    while (std::memcmp(bytes + length, kZero, width) != 0) length += width;
    return length;
}

char32_t UnitAt(const char* bytes, std::size_t width, bool highestFirst)
{
    char32_t unit = 0;
    for (std::size_t index = 0; index < width; ++index) {
        const std::size_t at = highestFirst ? index : width - 1 - index;
        unit = (unit << 8) | static_cast<unsigned char>(bytes[at]);
    }
    return unit;
}

void AppendUnit(std::string& bytes, char32_t unit, std::size_t width, bool highestFirst)
{
    for (std::size_t index = 0; index < width; ++index) {
        const std::size_t shift = 8 * (highestFirst ? width - 1 - index : index);
        bytes.push_back(static_cast<char>(unit >> shift));
    }
}

ASInt32 Sign(int comparison) { return comparison < 0 ? -1 : comparison > 0 ? 1 : 0; }

bool IsLineEnd(char16_t unit) { return unit == u'\r' || unit == u'\n'; }

/// The text with every line end replaced.
std::u16string WithLineEnds(std::u16string_view text, std::u16string_view lineEnd)
{
    std::u16string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!IsLineEnd(text[at])) {
            result.push_back(text[at]);
            continue;
        }
        if (text[at] == u'\r' && at + 1 < text.size() && text[at + 1] == u'\n') ++at;
        result.append(lineEnd);
    }
    return result;
}

}  // namespace

std::u16string Utf16FromFormat(const ASUTF16Val* text, ASUnicodeFormat format, std::optional<ASTArraySize> bytes)
{
    Require(text != nullptr, "no text was given");
    Require(!bytes || *bytes >= 0, "the length of a text is negative");
    const std::size_t width = WidthOf(format);
    const char* const from = reinterpret_cast<const char*>(text);
    const std::size_t length = bytes ? static_cast<std::size_t>(*bytes) : LengthToZero(from, width);
    if (width == 1) return Utf8ToUtf16({from, length});
    std::u32string wide;
    std::u16string narrow;
    for (std::size_t at = 0; at + width <= length; at += width) {
        const char32_t unit = UnitAt(from + at, width, HighestByteFirst(format));
        if (width == 2)
            narrow.push_back(static_cast<char16_t>(unit));
        else
            wide.push_back(unit);
    }
    return width == 2 ? narrow : Utf32ToUtf16(wide);
}

std::string BytesInFormat(std::u16string_view text, ASUnicodeFormat format)
{
    const std::size_t width = WidthOf(format);
    std::string bytes;
    if (width == 1) bytes = Utf16ToUtf8(text);
    if (width == 2)
        for (const char16_t unit : text) AppendUnit(bytes, unit, width, HighestByteFirst(format));
    if (width == 4)
        for (const char32_t unit : Utf16ToUtf32(text)) AppendUnit(bytes, unit, width, HighestByteFirst(format));
    bytes.append(width, '\0');
    return bytes;
}

std::string_view PdTextUpToZero(const char* text)
{
    Require(text != nullptr, "no text was given");
    const bool wide = text[0] == '\xFE' && text[1] == '\xFF';
    return {text, LengthToZero(text, wide ? 2 : 1)};
}

std::u16string WithSystemLineEnds(std::u16string_view text)
{
#ifdef _WIN32  // the line end of text files and edit fields differs, and nothing else here does
    return WithLineEnds(text, u"\r\n");
#else
    return WithLineEnds(text, u"\n");
#endif
}

std::u16string WithoutLineEnds(std::u16string_view text) { return WithLineEnds(text, u""); }

std::u16string WithoutAmpersands(std::u16string_view text)
{
    std::u16string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == u'&' && ++at == text.size()) break;
        result.push_back(text[at]);
    }
    return result;
}

std::u16string WithNarrowAscii(std::u16string_view text)
{
    return Mapped(text,
                  [](char32_t unit) -> char32_t { return unit >= 0xFF01 && unit <= 0xFF5E ? unit - 0xFEE0 : unit; });
}

std::u16string Mapped(std::u16string_view text, char32_t (*map)(char32_t))
{
    std::u16string result;
    for (const char16_t unit : text) result.push_back(static_cast<char16_t>(map(unit)));
    return result;
}

std::u16string Replaced(std::u16string_view text, std::u16string_view what, std::u16string_view by)
{
    if (what.empty()) return std::u16string(text);
    std::u16string result;
    for (std::size_t at = 0;;) {
        const std::size_t found = text.find(what, at);
        result.append(text.substr(at, found - at));
        if (found == std::u16string_view::npos) return result;
        result.append(by);
        at = found + what.size();
    }
}

ASInt32 CompareCharacters(std::u16string_view one, std::u16string_view other)
{
    return Sign(Utf16ToUtf32(one).compare(Utf16ToUtf32(other)));
}

ASInt32 CompareForPeople(std::u16string_view one, std::u16string_view other)
{
    const ASInt32 order = CompareCharacters(Mapped(one, LowerCased), Mapped(other, LowerCased));
    return order != 0 ? order : CompareCharacters(one, other);
}

}  // namespace openhost
