#include "base/ByteText.h"

#include <gtest/gtest.h>

#include <random>

namespace {

TEST(ByteText, LeavesValidTextAndMarksTheRest)
{
    const struct {
        std::string_view bytes, text;
    } rows[] = {
        {"", ""},
        {"a/b.pdf", "a/b.pdf"},
        {"gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80", "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"x\xFCy", "x\xEF\x9F\xBCy"},
        {"\x80", "\xEF\x9E\x80"},
        {"\xC0\xAF", "\xEF\x9F\x80\xEF\x9E\xAF"},                  // overlong
        {"\xED\xA0\x80", "\xEF\x9F\xAD\xEF\x9E\xA0\xEF\x9E\x80"},  // a surrogate
        {"\xE2\x82", "\xEF\x9F\xA2\xEF\x9E\x82"},                  // cut off
        {"\xEF\x9E\x80", "\xEF\x9F\xAF\xEF\x9E\x9E\xEF\x9E\x80"},  // itself such a character
        {"\xEF\x9D\xBF\xEF\xA0\x80", "\xEF\x9D\xBF\xEF\xA0\x80"},  // its neighbours on both sides
    };
    for (const auto& row : rows) {
        EXPECT_EQ(TextFromBytes(row.bytes), row.text);
        EXPECT_EQ(BytesFromText(row.text), row.bytes);
    }
}

TEST(ByteText, BringsBackAnyBytes)
{
    std::mt19937 random(7);
    // Few values, so that parts of characters meet often.
    constexpr std::string_view kBytes = "\xEF\x9E\x9F\x80\xBF\xC3\xE2\xED\xF0\xF4/a";
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(random() % 8, ' ');
        for (char& byte : bytes) byte = kBytes[random() % kBytes.size()];
        ASSERT_EQ(BytesFromText(TextFromBytes(bytes)), bytes);
    }
}

}  // namespace
