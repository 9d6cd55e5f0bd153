#include <climits>
#include <clocale>

#include <gtest/gtest.h>

#include "sequence/Values.h"

namespace {

TEST(ItemValues, IntegersReadTheLeadingDigitsAndStopAtTheEndsOfTheRange)
{
    const struct {
        const char* text;
        int value;
    } rows[] = {{"-1", -1},
                {" 42", 42},
                {"7.9", 7},
                {"abc", 0},
                {"+5", 5},
                {"99999999999999999999", INT_MAX},
                {"-99999999999999999999", INT_MIN}};
    for (const auto& row : rows) {
        const auto value = ItemValue("integer", row.text);
        ASSERT_TRUE(value) << row.text;
        EXPECT_EQ(std::get<std::int32_t>(*value), row.value) << row.text;
    }
}

TEST(ItemValues, DoublesNeedNoLocale)
{
    const char* const comma = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    const struct {
        const char* text;
        double value;
    } rows[] = {{"36.000000", 36}, {"-0.500000", -0.5}, {" +1.5", 1.5}, {"1e3", 1000}, {"2,5", 2}, {"", 0},
                {"x", 0},          {"nan", 0},          {"+-3", 0},     {".25", 0.25}};
    for (const auto& row : rows) EXPECT_EQ(LeadingDouble(row.text), row.value) << row.text;
    if (comma) std::setlocale(LC_NUMERIC, "C");
}

TEST(ItemValues, EmptyNumbersAndUnknownTypesStoreNothingAndOnlyTheExactWordIsTrue)
{
    for (const char* type : {"integer", "double", "", "Integer", "TEXT", "group"})
        EXPECT_FALSE(ItemValue(type, "")) << type;
    EXPECT_FALSE(ItemValue("list", "1"));
    for (const char* type : {"text", "atom", "null"}) EXPECT_TRUE(ItemValue(type, "")) << type;
    for (const char* text : {"TRUE", "True", "1", "yes", "true ", "", "true"})
        EXPECT_EQ(std::get<bool>(*ItemValue("boolean", text)), std::string(text) == "true") << text;
}

TEST(ItemValues, LongTextIsCutBetweenCharacters)
{
    std::string text(999'999, 'a');
    text += "\xE2\x82\xAC";  // one character of three bytes across the limit
    const auto value = ItemValue("text", text);
    EXPECT_EQ(std::get<WideText>(*value).utf8, std::string(999'999, 'a'));
    const std::string fits(1'000'000, 'b');
    EXPECT_EQ(std::get<WideText>(*ItemValue("text", fits + "c")).utf8, fits);
}

}  // namespace
