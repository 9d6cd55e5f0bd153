#include "openhost/values/Slots.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

#include "openhost/core/Raise.h"
#include "openhost/core/Tables.h"
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

void OfferFixedSlots(CTables& tables);

namespace {

constexpr double kOne = 65536.0;

/// The nearest number in 16.16; beyond the range the largest or smallest.
ASFixed FixedFrom(double units)
{
    constexpr double kMax = std::numeric_limits<ASFixed>::max();
    constexpr double kMin = std::numeric_limits<ASFixed>::min();
    if (std::isnan(units)) return 0;
    return static_cast<ASFixed>(std::clamp(std::round(units), kMin, kMax));
}

double Value(ASFixed number) { return number / kOne; }

ASFixed Multiply(ASFixed one, ASFixed other) { return FixedFrom(static_cast<double>(one) * other / kOne); }

ASFixed Divide(ASFixed one, ASFixed other)
{
    if (other == 0) return one < 0 ? std::numeric_limits<ASFixed>::min() : std::numeric_limits<ASFixed>::max();
    return FixedFrom(static_cast<double>(one) * kOne / other);
}

float ToFloat(ASFixed number) { return static_cast<float>(Value(number)); }

ASFixed FromFloat(double number) { return FixedFrom(number * kOne); }

void ToCString(ASFixed number, char* buffer, ASSize_t size, ASSmallCount precision)
{
    Require(buffer != nullptr && size > 0, "no buffer for the number");
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", std::clamp<int>(precision, 0, 16), Value(number));
    if (std::strchr(text, '.')) {
        std::size_t end = std::strlen(text);
        while (text[end - 1] == '0') text[--end] = 0;
        if (text[end - 1] == '.') text[end - 1] = 0;
    }
    std::snprintf(buffer, size, "%s", text);
}

ASFixed FromCString(const char* text)
{
    Require(text != nullptr, "no text was given");
    return FixedFrom(std::strtod(text, nullptr) * kOne);
}

/// The second matrix works first.
void Concat(ASFixedMatrixP result, const ASFixedMatrix* first, const ASFixedMatrix* second)
{
    Require(result && first && second, "a matrix is missing");
    const auto sum = [](ASFixed a, ASFixed b, ASFixed c, ASFixed d, ASFixed e) {
        return FixedFrom((static_cast<double>(a) * b + static_cast<double>(c) * d) / kOne + e);
    };
    const ASFixedMatrix m = *first;
    const ASFixedMatrix n = *second;
    *result = {sum(n.a, m.a, n.b, m.c, 0), sum(n.a, m.b, n.b, m.d, 0),   sum(n.c, m.a, n.d, m.c, 0),
               sum(n.c, m.b, n.d, m.d, 0), sum(n.h, m.a, n.v, m.c, m.h), sum(n.h, m.b, n.v, m.d, m.v)};
}

void Invert(ASFixedMatrixP result, const ASFixedMatrixP matrix)
{
    Require(result && matrix, "a matrix is missing");
    const ASFixedMatrix m = *matrix;
    const double a = Value(m.a), b = Value(m.b), c = Value(m.c), d = Value(m.d), h = Value(m.h), v = Value(m.v);
    const double determinant = a * d - b * c;
    Require(determinant != 0, "the matrix has no inverse");
    *result = {FromFloat(d / determinant),
               FromFloat(-b / determinant),
               FromFloat(-c / determinant),
               FromFloat(a / determinant),
               FromFloat((c * v - d * h) / determinant),
               FromFloat((b * h - a * v) / determinant)};
}

ASFixedPoint Transformed(const ASFixedMatrix& m, ASFixed h, ASFixed v)
{
    const double x = h, y = v;
    return {FixedFrom((m.a * x + m.c * y) / kOne + m.h), FixedFrom((m.b * x + m.d * y) / kOne + m.v)};
}

void TransformPoint(ASFixedPointP result, const ASFixedMatrixP matrix, const ASFixedPointP point)
{
    Require(result && matrix && point, "a matrix or a point is missing");
    *result = Transformed(*matrix, point->h, point->v);
}

void TransformRect(ASFixedRectP result, const ASFixedMatrixP matrix, const ASFixedRectP rect)
{
    Require(result && matrix && rect, "a matrix or a rectangle is missing");
    const ASFixedPoint corners[] = {
        Transformed(*matrix, rect->left, rect->top), Transformed(*matrix, rect->right, rect->top),
        Transformed(*matrix, rect->left, rect->bottom), Transformed(*matrix, rect->right, rect->bottom)};
    ASFixedRect around{corners[0].h, corners[0].v, corners[0].h, corners[0].v};
    for (const ASFixedPoint& corner : corners) {
        around.left = std::min(around.left, corner.h);
        around.right = std::max(around.right, corner.h);
        around.bottom = std::min(around.bottom, corner.v);
        around.top = std::max(around.top, corner.v);
    }
    *result = around;
}

}  // namespace

void OfferFixedSlots(CTables& tables)
{
    OFFER(tables, AcroSupport, ASFixedMul, Multiply);
    OFFER(tables, AcroSupport, ASFixedDiv, Divide);
    OFFER(tables, AcroSupport, ASFixedToCString, ToCString);
    OFFER(tables, AcroSupport, ASCStringToFixed, FromCString);
    OFFER(tables, AcroSupport, ASFixedMatrixConcat, Concat);
    OFFER(tables, AcroSupport, ASFixedMatrixInvert, Invert);
    OFFER(tables, AcroSupport, ASFixedMatrixTransform, TransformPoint);
    OFFER(tables, AcroSupport, ASFixedMatrixTransformRect, TransformRect);
    OFFER(tables, AcroSupport, ASFixedToFloat, ToFloat);
    OFFER(tables, AcroSupport, FloatToASFixed, FromFloat);
}

}  // namespace openhost
