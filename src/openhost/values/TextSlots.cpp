#include <cstdarg>
#include <cstring>
#include <vector>

#include "base/Unicode.h"
#include "openhost/core/Memory.h"
#include "openhost/core/Tables.h"
#include "openhost/values/Text.h"

namespace openhost {

void OfferTextSlots(CTables& tables);

namespace {

ASText TextNew() { return NewText(); }

ASText FromUnicode(const ASUTF16Val* ucs, ASUnicodeFormat format)
{
    return NewTextUtf16(Utf16FromFormat(ucs, format));
}

ASText FromSizedUnicode(const ASUTF16Val* ucs, ASUnicodeFormat format, ASTArraySize length)
{
    return NewTextUtf16(Utf16FromFormat(ucs, format, length));
}

ASText FromEncoded(const char* text, ASHostEncoding) { return NewTextUtf16(Utf16FromHost(Given(text))); }

ASText FromSizedEncoded(const char* text, ASTArraySize length, ASHostEncoding)
{
    return NewTextUtf16(Utf16FromHost(Given(text, length)));
}

ASText FromPdText(const char* text) { return NewTextUtf16(Utf16FromPdText(PdTextUpToZero(text))); }

ASText FromSizedPdText(const char* text, ASTArraySize length)
{
    return NewTextUtf16(Utf16FromPdText(Given(text, length)));
}

ASText FromInt32(ASInt32 number) { return NewText(std::to_string(number)); }

ASText FromUns32(ASUns32 number) { return NewText(std::to_string(number)); }

ASText DuplicateText(ASConstText text) { return DupText(TextAt(text)); }

void SetUnicode(ASText text, const ASUTF16Val* ucs, ASUnicodeFormat format)
{
    TextAt(text).Set(Utf16FromFormat(ucs, format));
}

void SetSizedUnicode(ASText text, const ASUTF16Val* ucs, ASUnicodeFormat format, ASTArraySize length)
{
    TextAt(text).Set(Utf16FromFormat(ucs, format, length));
}

void SetEncoded(ASText text, const char* bytes, ASHostEncoding) { TextAt(text).SetHostBytes(Given(bytes)); }

void SetSizedEncoded(ASText text, const char* bytes, ASTArraySize length, ASHostEncoding)
{
    TextAt(text).SetHostBytes(Given(bytes, length));
}

void SetPdText(ASText text, const char* bytes) { TextAt(text).Set(Utf16FromPdText(PdTextUpToZero(bytes))); }

void SetSizedPdText(ASText text, const char* bytes, ASTArraySize length)
{
    TextAt(text).Set(Utf16FromPdText(Given(bytes, length)));
}

const ASUTF16Val* GetUnicode(ASConstText text)
{
    return reinterpret_cast<const ASUTF16Val*>(TextAt(text).Utf16().c_str());
}

ASUTF16Val* GetUnicodeCopy(ASConstText text, ASUnicodeFormat format)
{
    return reinterpret_cast<ASUTF16Val*>(SharedCopy(BytesInFormat(TextAt(text).Utf16(), format)));
}

const char* GetEncoded(ASConstText text, ASHostEncoding)
{
    const CHostText& content = TextAt(text);
    return content.Lend(content.HostBytes());
}

char* GetEncodedCopy(ASConstText text, ASHostEncoding) { return SharedCopy(TextAt(text).HostBytes()); }

/// Behind the text stand two zeros, so that its end is found in both of its forms.
char* GetPdTextCopy(ASConstText text, ASTArraySize* length)
{
    const std::string bytes = PdTextFromUtf16(TextAt(text).Utf16());
    if (length) *length = static_cast<ASTArraySize>(bytes.size());
    return SharedCopy(bytes + '\0');
}

// Every 8-bit text of this host is UTF-8, which holds every script.
ASHostEncoding BestEncoding(ASConstText text, ASHostEncoding preferred)
{
    static_cast<void>(TextAt(text));
    return preferred;
}

ASHostEncoding EncodingOfScript(ASScript) { return kHostEncoding; }

ASScript ScriptOfEncoding(ASHostEncoding) { return kASRomanScript; }

ASCountryCode GetCountry(ASConstText text) { return TextAt(text).country; }
void SetCountry(ASText text, ASCountryCode country) { TextAt(text).country = country; }
ASLanguageCode GetLanguage(ASConstText text) { return TextAt(text).language; }
void SetLanguage(ASText text, ASLanguageCode language) { TextAt(text).language = language; }

void Cat(ASText to, ASConstText from)
{
    CHostText& target = TextAt(to);
    target.Set(target.Utf16() + TextAt(from).Utf16());
}

/// Stands in the table as it is: a function with a variable list of arguments has no wrapper.
void HOSTCALL CatMany(ASText to, ...)
{
    ASErrorCode raised = 0;
    va_list arguments;
    va_start(arguments, to);
    try {
        std::u16string all = TextAt(to).Utf16();
        while (const ASText text = va_arg(arguments, ASText)) all += TextAt(text).Utf16();
        TextAt(to).Set(std::move(all));
    } catch (...) {
        raised = RememberCurrentException();
    }
    va_end(arguments);
    if (raised != 0) Part<CFrames>().LeaveThroughTop();
}

void CopyText(ASText to, ASConstText from) { TextAt(to).CopyFrom(TextAt(from)); }

ASInt32 Compare(ASConstText one, ASConstText other)
{
    return CompareForPeople(TextAt(one).Utf16(), TextAt(other).Utf16());
}

ASInt32 CompareExactly(ASConstText one, ASConstText other)
{
    return CompareCharacters(TextAt(one).Utf16(), TextAt(other).Utf16());
}

void Replace(ASText text, ASConstText what, ASConstText by)
{
    CHostText& target = TextAt(text);
    target.Set(Replaced(target.Utf16(), TextAt(what).Utf16(), TextAt(by).Utf16()));
}

void ReplaceAscii(ASText text, const char* what, ASConstText by)
{
    CHostText& target = TextAt(text);
    target.Set(Replaced(target.Utf16(), Utf8ToUtf16(Given(what)), TextAt(by).Utf16()));
}

void ReplaceBadChars(ASText text, const char* bad, char by)
{
    CHostText& target = TextAt(text);
    const std::string_view list = Given(bad);
    std::u16string content = target.Utf16();
    for (char16_t& unit : content)
        if (unit < 0x80 && list.find(static_cast<char>(unit)) != std::string_view::npos)
            unit = static_cast<unsigned char>(by);
    target.Set(std::move(content));
}

ASBool IsEmpty(ASConstText text) { return TextAt(text).IsEmpty(); }

void NormalizeLineEnds(ASText text) { TextAt(text).Set(WithSystemLineEnds(TextAt(text).Utf16())); }

void EmptyText(ASText text) { TextAt(text).Set({}); }

/// For texts that must not linger in memory.
void MakeEmptyAndClear(ASText text)
{
    CHostText& target = TextAt(text);
    volatile char16_t* const units = const_cast<char16_t*>(target.Utf16().data());
    for (std::size_t index = 0; index < target.Utf16().size(); ++index) units[index] = 0;
    target.Set({});
    target.Lend({});
}

ASBool BytesAreUtf8(const ASUns8* bytes, ASCount length)
{
    Require(bytes != nullptr || length == 0, "no bytes were given");
    return IsValidUtf8({reinterpret_cast<const char*>(bytes), length});
}

void Filter(ASText text, ASTextFilterType filter)
{
    CHostText& target = TextAt(text);
    const std::u16string& content = target.Utf16();
    switch (filter) {
        case kASTextFilterIdentity:
            return;
        case kASTextFilterLineEndings:
            return target.Set(WithSystemLineEnds(content));
        case kASTextRemoveLineEndings:
            return target.Set(WithoutLineEnds(content));
        case kASTextFilterUpperCase:
            return target.Set(Mapped(content, UpperCased));
        case kASTextFilterLowerCase:
            return target.Set(Mapped(content, LowerCased));
        case kASTextFilterRemoveAmpersands:
            return target.Set(WithoutAmpersands(content));
        case kASTextFilterNormalizeFullWidthASCIIVariants:
            return target.Set(WithNarrowAscii(content));
        default:
            Raise(genErrBadParm, "unknown text filter");
    }
}

void OfferMakers(CTables& tables)
{
    OFFER(tables, ASExtra, ASTextNew, TextNew);
    OFFER(tables, ASExtra, ASTextFromUnicode, FromUnicode);
    OFFER(tables, ASExtra, ASTextFromSizedUnicode, FromSizedUnicode);
    OFFER(tables, ASExtra, ASTextFromEncoded, FromEncoded);
    OFFER(tables, ASExtra, ASTextFromSizedEncoded, FromSizedEncoded);
    OFFER(tables, ASExtra, ASTextFromScriptText, FromEncoded);
    OFFER(tables, ASExtra, ASTextFromSizedScriptText, FromSizedEncoded);
    OFFER(tables, ASExtra, ASTextFromPDText, FromPdText);
    OFFER(tables, ASExtra, ASTextFromSizedPDText, FromSizedPdText);
    OFFER(tables, ASExtra, ASTextFromInt32, FromInt32);
    OFFER(tables, ASExtra, ASTextFromUns32, FromUns32);
    OFFER(tables, ASExtra, ASTextDup, DuplicateText);
    OFFER(tables, ASExtra, ASTextDestroy, DestroyText);
}

void OfferSetters(CTables& tables)
{
    OFFER(tables, ASExtra, ASTextSetUnicode, SetUnicode);
    OFFER(tables, ASExtra, ASTextSetSizedUnicode, SetSizedUnicode);
    OFFER(tables, ASExtra, ASTextSetEncoded, SetEncoded);
    OFFER(tables, ASExtra, ASTextSetSizedEncoded, SetSizedEncoded);
    OFFER(tables, ASExtra, ASTextSetScriptText, SetEncoded);
    OFFER(tables, ASExtra, ASTextSetSizedScriptText, SetSizedEncoded);
    OFFER(tables, ASExtra, ASTextSetPDText, SetPdText);
    OFFER(tables, ASExtra, ASTextSetSizedPDText, SetSizedPdText);
    OFFER(tables, ASExtra, ASTextSetCountry, SetCountry);
    OFFER(tables, ASExtra, ASTextSetLanguage, SetLanguage);
    OFFER(tables, ASExtra, ASTextMakeEmpty, EmptyText);
    OFFER(tables, ASExtra, ASTextMakeEmptyClear, MakeEmptyAndClear);
    OFFER(tables, ASExtra, ASTextCat, Cat);
    tables.PutTyped<ASTextCatManySlotProc>(Table::ASExtra, kSlotASTextCatMany, &CatMany);
    OFFER(tables, ASExtra, ASTextCopy, CopyText);
    OFFER(tables, ASExtra, ASTextReplace, Replace);
    OFFER(tables, ASExtra, ASTextReplaceASCII, ReplaceAscii);
    OFFER(tables, ASExtra, ASTextReplaceBadChars, ReplaceBadChars);
    OFFER(tables, ASExtra, ASTextNormalizeEndOfLine, NormalizeLineEnds);
    OFFER(tables, ASExtra, ASTextFilter, Filter);
}

void OfferGetters(CTables& tables)
{
    OFFER(tables, ASExtra, ASTextGetUnicode, GetUnicode);
    OFFER(tables, ASExtra, ASTextGetUnicodeCopy, GetUnicodeCopy);
    OFFER(tables, ASExtra, ASTextGetEncoded, GetEncoded);
    OFFER(tables, ASExtra, ASTextGetEncodedCopy, GetEncodedCopy);
    OFFER(tables, ASExtra, ASTextGetScriptText, GetEncoded);
    OFFER(tables, ASExtra, ASTextGetScriptTextCopy, GetEncodedCopy);
    OFFER(tables, ASExtra, ASTextGetPDTextCopy, GetPdTextCopy);
    OFFER(tables, ASExtra, ASTextGetBestEncoding, BestEncoding);
    OFFER(tables, ASExtra, ASTextGetBestScript, BestEncoding);
    OFFER(tables, ASExtra, ASTextGetCountry, GetCountry);
    OFFER(tables, ASExtra, ASTextGetLanguage, GetLanguage);
    OFFER(tables, ASExtra, ASTextCmp, Compare);
    OFFER(tables, ASExtra, ASTextCaseSensitiveCmp, CompareExactly);
    OFFER(tables, ASExtra, ASTextIsEmpty, IsEmpty);
    OFFER(tables, ASExtra, ASIsValidUTF8, BytesAreUtf8);
    OFFER(tables, ASExtra, ASScriptToHostEncoding, EncodingOfScript);
    OFFER(tables, ASExtra, ASScriptFromHostEncoding, ScriptOfEncoding);
}

}  // namespace

void OfferTextSlots(CTables& tables)
{
    OfferMakers(tables);
    OfferSetters(tables);
    OfferGetters(tables);
}

}  // namespace openhost
