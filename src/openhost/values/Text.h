#ifndef FERRULE_OPENHOST_VALUES_TEXT_H
#define FERRULE_OPENHOST_VALUES_TEXT_H

#include <string>
#include <string_view>

#include "hostapi/HostTypes.h"
#include "openhost/core/Handles.h"
#include "openhost/core/Raise.h"

namespace openhost {

class CCabinet;

/// A Unicode text with an optional country and language, held by plug-ins as ASText.
class CHostText {
public:
    const std::u16string& Utf16() const { return m_text; }
    std::string Utf8() const;
    /// As host-encoded bytes; see Encoding.h for what survives.
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

}  // namespace openhost

#endif
