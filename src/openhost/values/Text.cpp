#include "openhost/values/Text.h"

#include <utility>

#include "base/Unicode.h"
#include "openhost/core/Host.h"
#include "openhost/values/Encoding.h"

namespace openhost {

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

}  // namespace openhost
