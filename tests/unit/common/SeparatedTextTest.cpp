#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/SeparatedText.h"
#include "support/TemporaryFolder.h"

namespace {

using Records = std::vector<std::vector<std::string>>;

TEST(SeparatedText, RecordsOfTextsInAnyHand)
{
    const struct {
        std::string text;
        SeparatedForm form;
        Records records;
    } rows[] = {
        {"", {}, {}},
        {"a,b\r\nc,\n\r,d", {}, {{"a", "b"}, {"c", ""}, {""}, {"", "d"}}},
        {"a,", {}, {{"a", ""}}},
        {"\"a,\"\"b\"\"\r\nc\",\"\"\nx\"y,\"z\"z", {}, {{"a,\"b\"\r\nc", ""}, {"x\"y", "zz"}}},
        {"a,b\t\"c\td\"", {.separator = '\t'}, {{"a,b", "c\td"}}},
        {"a\t\"c\td\"", {.separator = '\t', .quotes = false}, {{"a", "\"c", "d\""}}},
        {"\"\"", {}, {{""}}},
    };
    for (const auto& row : rows) {
        const auto read = ParseSeparated(row.text, row.form);
        ASSERT_TRUE(read) << row.text;
        Records records;
        for (const SeparatedRecord& record : *read) records.push_back(record.values);
        EXPECT_EQ(records, row.records) << row.text;
    }
    const auto read = ParseSeparated("a\n\"b\r\nc\rd\"\ne");
    ASSERT_EQ(read->size(), 3u);
    EXPECT_EQ(read->back().line, 5u);
    EXPECT_EQ(ParseSeparated("a\n\"b\n\"\nc,\"d\ne\n").Error(), "Line 4: a quote is never closed.");
    EXPECT_EQ(ParseSeparated("x\n\"").Error(), "Line 2: a quote is never closed.");
}

TEST(SeparatedText, WhatIsWrittenReadsTheSame)
{
    for (const char separator : {',', '\t'})
        for (const char* value : {"plain", "", "a,b", "a\tb", "say \"x\"", "\"", "two\r\nlines", "\n"}) {
            const std::string line = SeparatedValue(value, separator) + separator + SeparatedValue("x", separator);
            const auto read = ParseSeparated(line + "\r\n", {.separator = separator});
            ASSERT_TRUE(read && read->size() == 1) << line;
            EXPECT_EQ(read->front().values, (std::vector<std::string>{value, "x"})) << line;
        }
}

TEST(SeparatedText, BytesAreReadByTheirMarkElseByWhatTheyAre)
{
    const auto bytes = [](std::string_view text) { return std::string(text); };
    const struct {
        std::string bytes;
        CharacterSet asked;
        const char *utf8, *set;
    } rows[] = {
        {"\xEF\xBB\xBFé", CharacterSet::CodePage, "é", "UTF-8"},
        {"é", CharacterSet::Detect, "é", "UTF-8"},
        {"", CharacterSet::Detect, "", "UTF-8"},
        {bytes({"\xFF\xFE"
                "a\0\xE9\0",
                6}),
         CharacterSet::Detect, "aé", "UTF-16, little-endian"},
        {bytes({"\xFE\xFF\0a", 4}), CharacterSet::Utf8, "a", "UTF-16, big-endian"},
        {bytes({"a\0\xE9\0", 4}), CharacterSet::Detect, "aé", "UTF-16, little-endian"},
        {bytes({"\0a\0b", 4}), CharacterSet::Detect, "ab", "UTF-16, big-endian"},
        {"caf\xE9 \x80", CharacterSet::Utf8, "caf\uFFFD \uFFFD", "UTF-8"},
#ifndef _WIN32
        {"caf\xE9 \x80\x93", CharacterSet::Detect, "café €“", "Windows-1252"},
#endif
    };
    for (const auto& row : rows) {
        const DecodedText text = DecodeText(row.bytes, row.asked);
        EXPECT_EQ(text.utf8, row.utf8);
        EXPECT_EQ(text.set, row.set) << row.utf8;
    }
    const CTemporaryFolder folder;
    EXPECT_EQ(ReadDecodedText(folder.Write("t.csv", "caf\xC3\xA9"))->utf8, "café");
    EXPECT_THAT(ReadDecodedText(folder / "none").Error(), testing::Not(testing::IsEmpty()));
}

}  // namespace
