#include "openhost/values/Text.h"

#include <bit>
#include <cstring>
#include <utility>

#include <qpdf/QUtil.hh>

#include "base/Unicode.h"
#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"
#include "platform/NarrowText.h"

namespace openhost {

namespace {

constexpr char32_t kEscapedByte = 0xDC00;  // plus the byte, 80..FF
constexpr std::string_view kUtf16Mark = "\xFE\xFF", kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kSwappedMark = "\xFF\xFE";  // not allowed; some producers write it, and readers take it

}  // namespace

std::u16string Utf16FromHost(std::string_view bytes)
{
    const std::string utf8 = platform::Utf8FromNarrow(bytes);
    std::u16string text;
    text.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        if (const std::size_t length = CharacterLength(std::string_view(utf8).substr(at)); length > 0) {
            text += Utf8ToUtf16(std::string_view(utf8).substr(at, length));
            at += length;
        } else {
            text.push_back(static_cast<char16_t>(kEscapedByte + static_cast<unsigned char>(utf8[at++])));
        }
    }
    return text;
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
            AppendUtf8(bytes, character);
    }
    return platform::NarrowFromUtf8(bytes);
}

std::u16string Utf16FromPdText(std::string_view bytes)
{
    if (bytes.starts_with(kUtf8Mark)) return Utf8ToUtf16(bytes.substr(kUtf8Mark.size()));
    if (bytes.starts_with(kUtf16Mark)) return Utf16FromBytes(bytes.substr(kUtf16Mark.size()), true);
    if (bytes.starts_with(kSwappedMark)) return Utf16FromBytes(bytes.substr(kSwappedMark.size()), false);
    return Utf8ToUtf16(QUtil::pdf_doc_to_utf8(std::string(bytes)));
}

std::string PdTextFromUtf16(std::u16string_view text)
{
    std::string bytes;
    const std::string utf8 = Utf16ToUtf8(text);
    const bool fits = Utf8ToUtf16(utf8) == text && QUtil::utf8_to_pdf_doc(utf8, bytes);
    const bool looksMarked =
        bytes.starts_with(kUtf16Mark) || bytes.starts_with(kSwappedMark) || bytes.starts_with(kUtf8Mark);
    if (fits && !looksMarked) return bytes;
    return std::string(kUtf16Mark) + BytesOfUtf16(text, true);
}

std::string CHostText::Utf8() const { return Utf16ToUtf8(m_text); }

std::string CHostText::HostBytes() const { return HostFromUtf16(m_text); }

void CHostText::SetUtf8(std::string_view utf8) { m_text = Utf8ToUtf16(utf8); }

void CHostText::SetHostBytes(std::string_view bytes) { m_text = Utf16FromHost(bytes); }

void CHostText::CopyFrom(const CHostText& other)
{
    m_text = other.m_text;
    country = other.country;
    language = other.language;
}

const char* CHostText::Lend(std::string bytes) const
{
    m_lent = std::move(bytes);
    return m_lent.c_str();
}

CHostText& TextAt(ASConstText text) { return Part<CTexts>().handles.At(text); }

ASText NewText(std::string_view utf8) { return NewTextUtf16(Utf8ToUtf16(utf8)); }

ASText NewTextUtf16(std::u16string text)
{
    auto made = std::make_unique<CHostText>();
    made->Set(std::move(text));
    return Part<CTexts>().handles.Add(std::move(made));
}

ASText DupText(const CHostText& text)
{
    auto made = std::make_unique<CHostText>();
    made->CopyFrom(text);
    return Part<CTexts>().handles.Add(std::move(made));
}

void DestroyText(ASText text)
{
    Require(TextAt(text).Owner() == nullptr, "a text inside a cab cannot be destroyed");
    Part<CTexts>().handles.Take(text);
}

std::size_t LiveTexts() { return Part<CTexts>().handles.Live(); }

COwnedText& COwnedText::operator=(COwnedText&& other) noexcept
{
    std::swap(m_text, other.m_text);
    return *this;
}

COwnedText::~COwnedText()
{
    if (m_text) Part<CTexts>().handles.Take(m_text);
}

ASText COwnedText::Release() noexcept { return std::exchange(m_text, nullptr); }

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
