#include "openhost/values/Slots.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>

#include "openhost/core/Raise.h"
#include "openhost/values/Encoding.h"
#include "openhost/values/Text.h"

namespace openhost {

void OfferCabSlots(CTables& tables);
void OfferTextSlots(CTables& tables);
void OfferFixedSlots(CTables& tables);

namespace {

// ---- error texts as text objects

/// A code without a text leaves the text object alone.
void ErrorStringToText(ASErrorCode code, ASText text)
{
    CHostText& target = TextAt(text);
    const std::string message = ErrorText(code);
    if (!message.empty()) target.SetHostBytes(message);
}

ASErrorCode RegisterErrorStringFromText(ASErrSeverity severity, const ASText text)
{
    return RegisterErrorText(severity, TextAt(text).HostBytes());
}

// ---- text of documents

/// Copies as much as fits with a zero at the end and answers the whole length in bytes, without the zero.
ASInt32 Deliver(std::string_view bytes, char* buffer, ASInt32 size)
{
    if (buffer && size > 0) {
        const std::size_t count = std::min(bytes.size(), static_cast<std::size_t>(size) - 1);
        std::memcpy(buffer, bytes.data(), count);
        buffer[count] = 0;
    }
    return static_cast<ASInt32>(bytes.size());
}

ASHostEncoding HostEncoding() { return kHostEncoding; }

ASInt32 HostCharacterLength(const char* character)
{
    Require(character != nullptr, "no text was given");
    const auto lead = static_cast<unsigned char>(*character);
    return lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
}

ASInt32 PdTextToHost(const char* text, ASInt32 length, char* buffer, ASInt32 size)
{
    return Deliver(HostFromUtf16(Utf16FromPdText(Given(text, length))), buffer, size);
}

ASInt32 HostToPdText(ASBool unicode, const char* text, ASInt32 length, char* buffer, ASInt32 size)
{
    const std::u16string content = Utf16FromHost(Given(text, length));
    std::string bytes = PdTextFromUtf16(content);
    if (unicode && !bytes.starts_with("\xFE\xFF")) {
        bytes = "\xFE\xFF";
        for (const char16_t unit : content) {
            bytes.push_back(static_cast<char>(unit >> 8));
            bytes.push_back(static_cast<char>(unit));
        }
    }
    return Deliver(bytes, buffer, size);
}

void HostToText(const char* bytes, ASInt32 length, ASText text) { TextAt(text).SetHostBytes(Given(bytes, length)); }

// ---- unique names

/// A random one of the fourth kind.
ASBool MakeUnique(ASUUID* unique)
{
    Require(unique != nullptr, "no place for the identity");
    std::random_device source;
    unsigned char bytes[sizeof(ASUUID)];
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(source());
    std::memcpy(unique, bytes, sizeof bytes);
    unique->timeHiAndVersion = static_cast<ASUns16>((unique->timeHiAndVersion & 0x0FFF) | 0x4000);
    unique->clockSeqHiAndReserved = static_cast<ASUns8>((unique->clockSeqHiAndReserved & 0x3F) | 0x80);
    return 1;
}

/// The buffer has room for 37 characters.
void UniqueToCString(char* buffer, const ASUUID* unique)
{
    Require(buffer && unique, "no identity, or no buffer for it");
    const ASUns8* const node = unique->node;
    std::snprintf(buffer, 37, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", unique->timeLow, unique->timeMid,
                  unique->timeHiAndVersion, unique->clockSeqHiAndReserved, unique->clockSeqLow, node[0], node[1],
                  node[2], node[3], node[4], node[5]);
}

}  // namespace

void OfferValuesSlots(CTables& tables)
{
    OfferCabSlots(tables);
    OfferTextSlots(tables);
    OfferFixedSlots(tables);
    OFFER(tables, AcroSupport, ASGetErrorStringASText, ErrorStringToText);
    OFFER(tables, AcroSupport, ASRegisterErrorStringASText, RegisterErrorStringFromText);
    OFFER(tables, PDModel, PDGetHostEncoding, HostEncoding);
    OFFER(tables, PDModel, PDHostMBLen, HostCharacterLength);
    OFFER(tables, PDModel, PDXlateToHostEx, PdTextToHost);
    OFFER(tables, PDModel, PDXlateToPDFDocEncEx, HostToPdText);
    OFFER(tables, PDModel, PDXlateToASText, HostToText);
    OFFER(tables, AcroSupport, ASUUIDGenUnique, MakeUnique);
    OFFER(tables, AcroSupport, ASUUIDToCString, UniqueToCString);
}

}  // namespace openhost
