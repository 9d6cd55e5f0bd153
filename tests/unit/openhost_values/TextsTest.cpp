#include <cstring>

#include "base/Unicode.h"
#include "unit/openhost_values/ValuesHost.h"

namespace {

using namespace std::string_literals;

const ASUTF16Val* Units(const std::string& bytes) { return reinterpret_cast<const ASUTF16Val*>(bytes.data()); }

class Texts : public CValuesHost {
protected:
    static std::string Utf8(ASText text)
    {
        auto* const copy = reinterpret_cast<char*>(EXTRA(ASTextGetUnicodeCopy)(text, kUTF8));
        std::string bytes = copy;
        SUPPORT(ASfree)(copy);
        return bytes;
    }
    static std::string PdText(ASText text)
    {
        ASTArraySize length = -1;
        char* const copy = EXTRA(ASTextGetPDTextCopy)(text, &length);
        std::string bytes(copy, static_cast<std::size_t>(length));
        SUPPORT(ASfree)(copy);
        return bytes;
    }
    static ASText FromUtf8(const char* utf8) { return EXTRA(ASTextFromEncoded)(utf8, 0); }
};

TEST_F(Texts, EveryFormatGoesInAndComesOut)
{
    // "A", e with acute, a smiling face
    const struct {
        ASUnicodeFormat format;
        std::string bytes;
        std::size_t width;
    } rows[] = {{kUTF16BigEndian, "\0A\0\xE9\xD8\x3D\xDE\0"s, 2},
                {kUTF16HostEndian, "A\0\xE9\0\x3D\xD8\0\xDE"s, 2},
                {kUTF8, "A\xC3\xA9\xF0\x9F\x98\x80"s, 1},
                {kUTF32BigEndian, "\0\0\0A\0\0\0\xE9\0\1\xF6\0"s, 4},
                {kUTF32HostEndian, "A\0\0\0\xE9\0\0\0\0\xF6\1\0"s, 4}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.format);
        const std::string ended = row.bytes + std::string(4, '\0');
        const OwnText toZero = EXTRA(ASTextFromUnicode)(Units(ended), row.format);
        const OwnText sized =
            EXTRA(ASTextFromSizedUnicode)(Units(ended), row.format, static_cast<ASTArraySize>(row.bytes.size()));
        EXPECT_EQ(Utf8(toZero), rows[2].bytes);
        EXPECT_EQ(EXTRA(ASTextCaseSensitiveCmp)(toZero, sized), 0);
        ASUTF16Val* const copy = EXTRA(ASTextGetUnicodeCopy)(toZero, row.format);
        const std::string back(reinterpret_cast<char*>(copy), row.bytes.size() + row.width);
        EXPECT_EQ(back, row.bytes + std::string(row.width, '\0'));
        SUPPORT(ASfree)(copy);
        const ASUTF16Val* const lent = EXTRA(ASTextGetUnicode)(sized);
        EXPECT_EQ(lent[2], 0xD83D);
        EXPECT_EQ(lent[4], 0);
    }
}

TEST_F(Texts, ZerosInsideASizedTextStay)
{
    const OwnText text = EXTRA(ASTextFromSizedEncoded)("a\0b", 3, 0);
    EXPECT_EQ(PdText(text), "a\0b"s);
    EXTRA(ASTextSetSizedUnicode)(text, Units("\0a\0\0\0b"s), kUTF16BigEndian, 6);
    EXPECT_EQ(PdText(text), "a\0b"s);
    EXTRA(ASTextSetSizedUnicode)(text, Units("\0a\0"s), kUTF16BigEndian, 3);  // half a unit
    EXPECT_EQ(PdText(text), "a"s);
}

TEST_F(Texts, PdTextIsPdfDocEncodingOrMarkedUnicode)
{
    const struct {
        std::string pdText, utf8;
        bool returnsSame;
    } rows[] = {
        {"plain \xE9", "plain \xC3\xA9", true},
        {"\x80\x8A\x92\xA0\x18\x1F", "\xE2\x80\xA2\xE2\x88\x92\xE2\x84\xA2\xE2\x82\xAC\xCB\x98\xCB\x9C", true},
        {"\xFE\xFF\x04\x14\0A"s, "\xD0\x94"s + "A", true},
        {"\xFE\xFF\0A"s, "A", false},
        {"\xEF\xBB\xBF\xD0\x94", "\xD0\x94", false},
        {"\x9F\x7F\xAD", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD", false},
        {"\xFE\xFF\0\xFE\0\xFF"s, "\xC3\xBE\xC3\xBF", true}};  // unmarked it would look like a mark
    for (const auto& row : rows) {
        const OwnText text =
            EXTRA(ASTextFromSizedPDText)(row.pdText.data(), static_cast<ASTArraySize>(row.pdText.size()));
        EXPECT_EQ(Utf8(text), row.utf8);
        EXPECT_EQ(PdText(text) == row.pdText, row.returnsSame) << row.utf8;
        EXTRA(ASTextSetPDText)(text, (row.pdText + "\0"s).c_str());  // up to the zero of its own width
        EXPECT_EQ(Utf8(text), row.utf8);
    }
}

TEST_F(Texts, HostBytesSurviveAlsoWhereTheyAreNoUtf8WhichIsValidOnlyInItsShortestForm)
{
    const struct {
        const char* bytes;
        bool valid;
    } rows[] = {{"", true},          {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", true},
                {"\xC0\xAF", false}, {"\xE0\x80\xAF", false},
                {"\x80", false},     {"\xED\xA0\x80", false},
                {"\xC3", false},     {"\xF4\x90\x80\x80", false},
                {"\xE2\x82", false}, {"\xF0\x9F\x98", false},
                {"\xF5\x80", false}, {"caf\xE9.pdf", false}};
    for (const auto& [bytes, valid] : rows) {
        const auto size = static_cast<ASCount>(std::strlen(bytes));
        EXPECT_EQ(EXTRA(ASIsValidUTF8)(reinterpret_cast<const ASUns8*>(bytes), size), valid) << bytes;
        const OwnText text = FromUtf8(bytes);
        EXPECT_STREQ(EXTRA(ASTextGetEncoded)(text, 0), bytes);
        char* const copy = EXTRA(ASTextGetScriptTextCopy)(text, kASRomanScript);
        EXPECT_STREQ(copy, bytes);
        SUPPORT(ASfree)(copy);
        EXPECT_TRUE(IsValidUtf8(Utf8(text))) << bytes;
    }
}

TEST_F(Texts, AppendingAndReplacingWorkOnTheSameTextToo)
{
    const ASText text = FromUtf8("aXa");
    const ASText x = FromUtf8("X");
    const ASText longer = FromUtf8("aXX");
    EXTRA(ASTextReplace)(text, x, longer);  // what comes in is not searched again
    EXPECT_EQ(Utf8(text), "aaXXa");
    EXTRA(ASTextReplaceASCII)(text, "a", x);
    EXPECT_EQ(Utf8(text), "XXXXX");
    EXTRA(ASTextReplaceASCII)(text, "", x);
    EXTRA(ASTextReplace)(text, text, x);
    EXPECT_EQ(Utf8(text), "X");
    EXTRA(ASTextCat)(text, text);
    EXTRA(ASTextCatMany)(text, longer, text, static_cast<ASText>(nullptr));
    EXPECT_EQ(Utf8(text), "XXaXXXX");
    EXTRA(ASTextReplaceBadChars)(text, "a?", '_');
    EXPECT_EQ(Utf8(text), "XX_XXXX");
    EXPECT_REFUSED(EXTRA(ASTextCatMany)(text, reinterpret_cast<ASText>(this), static_cast<ASText>(nullptr)));
    EXPECT_EQ(Utf8(text), "XX_XXXX");
    EXTRA(ASTextMakeEmptyClear)(text);
    EXPECT_TRUE(EXTRA(ASTextIsEmpty)(text));
    for (const ASText each : {text, x, longer}) EXTRA(ASTextDestroy)(each);
}

TEST_F(Texts, UnusableArgumentsRaise)
{
    const OwnText text = EXTRA(ASTextFromInt32)(-7);
    const ASText gone = EXTRA(ASTextFromUns32)(4000000000u);
    EXPECT_EQ(Utf8(text) + " " + Utf8(gone), "-7 4000000000");
    EXTRA(ASTextDestroy)(gone);
    const ASUTF16Val zero = 0;
    for (const ASText none : {gone, ASText{}}) EXPECT_REFUSED(EXTRA(ASTextDestroy)(none));
    for (const ASUnicodeFormat none : std::initializer_list<ASUnicodeFormat>{5, -1})
        EXPECT_REFUSED(EXTRA(ASTextFromUnicode)(&zero, none));
    EXPECT_REFUSED(EXTRA(ASTextFromUnicode)(nullptr, kUTF8));
    EXPECT_REFUSED(EXTRA(ASTextFromSizedUnicode)(&zero, kUTF8, -1));
    EXPECT_REFUSED(EXTRA(ASTextSetEncoded)(text, nullptr, 0));
    EXPECT_REFUSED(EXTRA(ASTextGetUnicodeCopy)(text, 9));
    EXPECT_REFUSED(EXTRA(ASTextFilter)(text, kASTextFilterRsvd1));
    EXPECT_EQ(Utf8(text), "-7");
}

}  // namespace
