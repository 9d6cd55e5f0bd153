#include "openhost/values/Encoding.h"

#include <qpdf/QUtil.hh>

#include "base/Unicode.h"
#include "platform/NarrowText.h"

namespace openhost {

namespace {

constexpr char32_t kEscapedByte = 0xDC00;  // plus the byte, 80..FF
constexpr std::string_view kUtf16Mark = "\xFE\xFF", kUtf8Mark = "\xEF\xBB\xBF";

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
    return Utf8ToUtf16(QUtil::pdf_doc_to_utf8(std::string(bytes)));
}

std::string PdTextFromUtf16(std::u16string_view text)
{
    std::string bytes;
    const std::string utf8 = Utf16ToUtf8(text);
    const bool fits = Utf8ToUtf16(utf8) == text && QUtil::utf8_to_pdf_doc(utf8, bytes);
    if (fits && !bytes.starts_with(kUtf16Mark) && !bytes.starts_with(kUtf8Mark)) return bytes;
    return std::string(kUtf16Mark) + BytesOfUtf16(text, true);
}

}  // namespace openhost
