#include "hostcalls/HostText.h"

#include "base/Unicode.h"
#include "hostcalls/HostMemory.h"
#include "platform/NarrowText.h"

static_assert(sizeof(ASUTF16Val) == sizeof(char16_t));

CHostText::CHostText() : m_text(HostCall(HOST_SLOT(ASExtra, ASTextNew))) {}

CHostText::~CHostText()
{
    if (m_text) hostcalls::Quietly([this] { HostCall(HOST_SLOT(ASExtra, ASTextDestroy), m_text); });
}

CHostText CHostText::FromUtf8(const std::string& utf8)
{
    const std::u16string units = Utf8ToUtf16(utf8);
    return CHostText(HostCall(HOST_SLOT(ASExtra, ASTextFromUnicode),
                              reinterpret_cast<const ASUTF16Val*>(units.c_str()), kUTF16HostEndian));
}

CHostText CHostText::FromNarrow(const std::string& narrow) { return FromUtf8(platform::Utf8FromNarrow(narrow)); }

std::string CHostText::ToUtf8() const { return Utf8FromText(m_text); }

std::string CHostText::ToNarrow() const { return NarrowFromText(m_text); }

std::string CHostText::ToPdText() const
{
    ASTArraySize length = 0;
    const CHostMemory bytes(HostCall(HOST_SLOT(ASExtra, ASTextGetPDTextCopy), m_text, &length));
    if (!bytes.Get() || length <= 0) return {};
    return std::string(bytes.Text(), static_cast<std::size_t>(length));
}

std::string Utf8FromText(ASConstText text)
{
    if (!text) return {};
    const ASUTF16Val* units = HostCall(HOST_SLOT(ASExtra, ASTextGetUnicode), text);
    if (!units) return {};
    return Utf16ToUtf8(reinterpret_cast<const char16_t*>(units));
}

std::string NarrowFromText(ASConstText text) { return platform::NarrowFromUtf8(Utf8FromText(text)); }
