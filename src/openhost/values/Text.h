#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "hostapi/HostTypes.h"
#include "openhost/core/Handles.h"
#include "openhost/core/Raise.h"

namespace openhost {

/// The one encoding of 8-bit texts that this host uses for all of its "host encoding" calls: that of narrow text,
/// which is UTF-8 but in a process on Windows without our manifest. The number is the one that plug-ins see; the
/// others that they may pass are read and written in the same way.
inline constexpr ASHostEncoding kHostEncoding = 0;

/// Host-encoded bytes, file names above all, survive the way there and back: a byte that is not UTF-8 travels as the
/// lone surrogate U+DC80..U+DCFF.
std::u16string Utf16FromHost(std::string_view bytes);
std::string HostFromUtf16(std::u16string_view text);

/// The text form of PDF strings: UTF-16BE behind FE FF (or UTF-8 behind EF BB BF), else PDFDocEncoding. Bytes without
/// a meaning become U+FFFD.
std::u16string Utf16FromPdText(std::string_view bytes);
/// PDFDocEncoding where it can hold the whole text, else UTF-16BE with its mark.
std::string PdTextFromUtf16(std::u16string_view text);

class CCabinet;

/// A Unicode text with an optional country and language, held by plug-ins as ASText.
class CHostText {
public:
    const std::u16string& Utf16() const { return m_text; }
    std::string Utf8() const;
    /// As host-encoded bytes; see Utf16FromHost for what survives.
    std::string HostBytes() const;
    bool IsEmpty() const { return m_text.empty(); }

    void Set(std::u16string text) { m_text = std::move(text); }
    void SetUtf8(std::string_view utf8);
    void SetHostBytes(std::string_view bytes);
    void CopyFrom(const CHostText& other);  // content, country and language

    ASCountryCode country = 0;
    ASLanguageCode language = 0;

    /// The cab that owns this text, or null. A text inside a cab is destroyed by that cab only.
    const CCabinet* Owner() const { return m_owner; }
    void SetOwner(const CCabinet* owner) { m_owner = owner; }

    /// Bytes that a plug-in got a pointer to; they live until the next call that asks for them.
    const char* Lend(std::string bytes) const;

private:
    std::u16string m_text;
    const CCabinet* m_owner = nullptr;
    mutable std::string m_lent;
};

/// All living texts. A text that is destroyed or used twice raises genErrBadParm.
class CTexts {
public:
    CHandles<CHostText, ASText> handles{"text"};
};

/// The text that a plug-in gave; raises genErrBadParm when it gave none.
inline std::string_view Given(const char* text)
{
    Require(text != nullptr, "no text was given");
    return text;
}
inline std::string_view Given(const char* text, ASInt32 length)
{
    Require(text != nullptr && length >= 0, "no text was given, or one of negative length");
    return {text, static_cast<std::size_t>(length)};
}

/// Raises genErrBadParm unless `text` is a living text.
CHostText& TextAt(ASConstText text);
/// A new text that the caller destroys, or hands over.
ASText NewText(std::string_view utf8 = {});
ASText NewTextUtf16(std::u16string text);
ASText DupText(const CHostText& text);
inline ASText TextHandle(const CHostText& text) { return CHandles<CHostText, ASText>::HandleOf(text); }
/// Raises genErrBadParm for an unknown text or one inside a cab.
void DestroyText(ASText text);
std::size_t LiveTexts();

/// Owns one text for host code; Release() hands it over.
class COwnedText {
public:
    explicit COwnedText(ASText adopted = nullptr) : m_text(adopted) {}
    COwnedText(COwnedText&& other) noexcept : m_text(other.Release()) {}
    COwnedText& operator=(COwnedText&& other) noexcept;
    ~COwnedText();
    ASText Get() const { return m_text; }
    CHostText& operator*() const { return TextAt(m_text); }
    CHostText* operator->() const { return &TextAt(m_text); }
    ASText Release() noexcept;

private:
    ASText m_text;
};

/// Texts as plug-ins pass them: a pointer, a format, and a length in bytes or a zero of the format's width at the
/// end. Raises genErrBadParm for a null pointer, an unknown format or a negative length.
std::u16string Utf16FromFormat(const ASUTF16Val* text, ASUnicodeFormat format,
                               std::optional<ASTArraySize> bytes = std::nullopt);
/// The bytes of a text in a format, with a zero of the format's width at the end.
std::string BytesInFormat(std::u16string_view text, ASUnicodeFormat format);

/// PD text that ends with a zero of its own width.
std::string_view PdTextUpToZero(const char* text);

/// LF, CR and CR LF become the line end of this system.
std::u16string WithSystemLineEnds(std::u16string_view text);
std::u16string WithoutLineEnds(std::u16string_view text);
/// "&Open" becomes "Open"; a doubled one becomes a single one.
std::u16string WithoutAmpersands(std::u16string_view text);
std::u16string WithNarrowAscii(std::u16string_view text);
std::u16string Mapped(std::u16string_view text, char32_t (*map)(char32_t));
std::u16string Replaced(std::u16string_view text, std::u16string_view what, std::u16string_view by);

/// Below 0, 0, above 0. In the order of their characters' numbers.
ASInt32 CompareCharacters(std::u16string_view one, std::u16string_view other);
/// As people sort: without regard to case first.
ASInt32 CompareForPeople(std::u16string_view one, std::u16string_view other);

}  // namespace openhost
