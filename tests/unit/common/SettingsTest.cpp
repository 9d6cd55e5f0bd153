#include <algorithm>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <limits>

#include <gtest/gtest.h>

#include "common/SettingsFile.h"
#include "common/SettingsRecord.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"

namespace {

CSettingsRecord EveryType()
{
    CSettingsRecord nested;
    nested.PutString("empty", "");
    nested.PutRecord("empty record", {});
    CSettingsRecord record;
    record.PutBool("AllowLogging", false);
    record.PutInt("least", INT_MIN);
    record.PutDouble("tenth", 0.1);
    record.PutDouble("tiny", std::numeric_limits<double>::denorm_min());
    record.PutDouble("endless", -std::numeric_limits<double>::infinity());
    record.PutString("bytes", std::string(" \\ a\r\nb\0\xFF\x7F ", 11));
    record.PutWide("OutputFolderW", "/\xC3\xA4 \xF0\x9F\x98\x80");
    record.PutBinary("key", std::string("\0\x01\xFF", 3));
    record.PutAtom("name", "DO\xC3\x84 \xFF");
    record.PutNull("nothing");
    record.PutRecord("Password Files\n\xC3\xA4", nested);
    record.PutString("", "under the empty key");
    return record;
}

CSettingsRecord Nested(int levels)
{
    CSettingsRecord record;
    for (int i = 0; i < levels; ++i) {
        CSettingsRecord outer;
        outer.PutRecord("inner", std::move(record));
        record = std::move(outer);
    }
    return record;
}

}  // namespace

TEST(SettingsRecord, AnotherTypeReadsAsTheDefault)
{
    const auto record = EveryType();
    EXPECT_TRUE(record.Bool("least", true));
    EXPECT_EQ(record.Int("AllowLogging", 7), 7);
    EXPECT_EQ(record.Double("least", 1.5), 1.5);
    EXPECT_EQ(record.String("OutputFolderW", "d"), "d");
    EXPECT_EQ(record.Wide("bytes", "d"), "d");
    EXPECT_EQ(record.Record("bytes"), nullptr);
    EXPECT_EQ(record.Int("absent", 7), 7);
    EXPECT_TRUE(record.Known("nothing"));
}

TEST(SettingsRecord, KeysKeepTheirPlaceUntilErasedAndCopiesAreIndependent)
{
    CSettingsRecord record;
    for (const char* key : {"a", "b", "c", "d"}) record.PutInt(key, 1);
    record.PutString("b", "changed");
    record.Erase("a");
    record.Erase("absent");
    record.PutInt("c", 3);
    record.PutInt("a", 4);
    std::string order;
    for (const auto& entry : record.Entries()) order += entry.key;
    EXPECT_EQ(order, "bcda");
    EXPECT_EQ(record.String("b"), "changed");
    EXPECT_EQ(record.Int("c", 0), 3);
    EXPECT_EQ(record.Int("a", 0), 4);

    const auto original = EveryType();
    auto copy = EveryType();
    EXPECT_EQ(copy, original);
    auto nested = *copy.Record("Password Files\n\xC3\xA4");
    nested.PutString("empty", "no longer");
    copy.PutRecord("Password Files\n\xC3\xA4", nested);
    EXPECT_NE(copy, original);
    EXPECT_EQ(original, EveryType());
}

TEST(SettingsLists, MapsCountTextsAndDistrustTheCount)
{
    CSettingsRecord record;
    PutMap(record, "map", {{"a", "1"}, {"b", "2"}, {"a", "3"}});
    EXPECT_EQ(record.Record("map")->Int("NumItems", 0), 6);
    EXPECT_EQ(record.Record("map")->String("5"), "3");
    EXPECT_EQ(ReadMap(record, "map"), (TextPairs{{"a", "1"}, {"b", "2"}, {"a", "3"}}));
    EXPECT_EQ(ReadMap(record, "absent"), TextPairs{});

    const struct {
        int stored;
        TextPairs pairs;  // an odd count ends before the last value, which is there or not
    } rows[] = {{-1, {}},
                {1, {{"x", ""}}},
                {3, {{"x", ""}, {"z", "v"}}},
                {4, {{"x", ""}, {"z", "v"}}},
                {5, {{"x", ""}, {"z", "v"}}},
                {INT_MAX, {{"x", ""}, {"z", "v"}, {"last", ""}}}};
    for (const auto& row : rows) {
        CSettingsRecord list;
        list.PutString("0", "x");
        list.PutWide("2", "z");
        list.PutString("3", "v");
        list.PutString("8", "last");
        list.PutInt("NumItems", row.stored);
        record.PutRecord("list", list);
        EXPECT_EQ(ReadMap(record, "list"), row.pairs) << row.stored;
    }
}

TEST(SettingsLists, RectanglesAreRecordsOfFourNumbers)
{
    CSettingsRecord record;
    const SettingsRectangle rectangle{1, 2.5, -3, 4};
    PutRectangle(record, "area", rectangle);
    EXPECT_EQ(record.Record("area")->Double("Right", 0), 2.5);
    EXPECT_EQ(ReadRectangle(record, "area", {}), rectangle);
    EXPECT_EQ(ReadRectangle(record, "absent", rectangle), rectangle);
}

TEST(SettingsFile, EveryTypeComesBackAndOnlyTheOwnerMayRead)
{
    const CTemporaryFolder folder;
    const auto path = folder / "Ferrule.cfs";
    ASSERT_TRUE(WriteSettingsFile(path, EveryType()));
    if (kHasModes) {
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
    }
    const auto read = ReadSettingsFile(path);
    ASSERT_TRUE(read.Ok()) << read.problem;
    EXPECT_EQ(read.record, EveryType());
    EXPECT_EQ(read.record.Entries().front().key, "AllowLogging");
}

TEST(SettingsFile, TheLinesOfOlderVersionsAreReadAndWrittenAsJson)
{
    const std::string old =
        "Ferrule settings 1\nbool AllowLogging false\nint least -2147483648\ndouble tenth 0.1\ndouble tiny 5e-324\n"
        "double endless -inf\n" +
        std::string("text bytes  \\5c a\\0d\\0ab\\00\xFF\\7f \n") +
        "wide OutputFolderW /\xC3\xA4 \xF0\x9F\x98\x80\nbinary key 0001ff\nnull nothing \n"
        "record Password\\20Files\\0a\xC3\xA4 \ntext empty \nrecord empty\\20record \n.\n.\n"
        "text  under the empty key\nend 91c8ca59c8db4283\n";
    const auto read = ParseSettings(old);
    ASSERT_TRUE(read.Ok()) << read.problem;
    auto expected = EveryType();
    expected.Erase("name");  // a type that they did not have
    EXPECT_EQ(read.record, expected);
    const std::string written = FormatSettings(read.record);
    EXPECT_TRUE(written.starts_with("{"));
    EXPECT_EQ(ParseSettings(written).record, expected);
    for (std::size_t at = 0; at < old.size(); ++at) {
        std::string changed = old;
        changed[at] ^= '\x01';
        EXPECT_FALSE(ParseSettings(changed).Ok()) << at;
    }
}

TEST(SettingsFile, NoCutAndNoChangedByteGoesUnnoticed)
{
    const auto good = FormatSettings(EveryType());
    ASSERT_TRUE(ParseSettings(good).Ok());
    // Without its last line end the file still says all.
    for (std::size_t length = 0; length + 1 < good.size(); ++length) {
        EXPECT_EQ(ParseSettings(good.substr(0, length)).state, SettingsFileState::Damaged) << length;
    }
    for (std::size_t i = 0; i < good.size(); ++i) {
        for (const char flip : {'\x01', '\x10', '\x80'}) {
            std::string changed = good;
            changed[i] = static_cast<char>(changed[i] ^ flip);
            const auto parsed = ParseSettings(changed);
            EXPECT_TRUE(!parsed.Ok() || parsed.record == EveryType()) << i;
            EXPECT_TRUE(parsed.Ok() || parsed.record.Empty()) << i;
        }
    }
    EXPECT_FALSE(ParseSettings(good + "more\n").Ok());
    EXPECT_FALSE(ParseSettings(good + good).Ok());

    std::string travelled;  // as a text file
    for (const char c : good) travelled += c == '\n' ? std::string("\r\n") : std::string(1, c);
    const auto parsed = ParseSettings(travelled);
    ASSERT_TRUE(parsed.Ok()) << parsed.problem;
    EXPECT_EQ(parsed.record, EveryType());
}

TEST(SettingsFile, RefusalsSayWhy)
{
    const CTemporaryFolder folder;
    const struct {
        std::string bytes;
        SettingsFileState state;
    } rows[] = {
        {"", SettingsFileState::Damaged},
        {"%PDF-1.7\n", SettingsFileState::Foreign},
        {"Ferrule settings 2\nanything\n", SettingsFileState::Newer},
        {"Ferrule settings 99999999999999999999\n", SettingsFileState::Newer},
        {"Ferrule settings 1\n", SettingsFileState::Damaged},
        {"Ferrule settings 1\n.\nend 0\n", SettingsFileState::Damaged},
        {"{\"some\": \"object\"}", SettingsFileState::Foreign},
        {"{\"ferrule\": \"settings\", \"version\": 3}", SettingsFileState::Newer},
        {"{\"ferrule\": \"settings\", \"version\": 2, \"values\": []}", SettingsFileState::Damaged},
        {R"({"ferrule": "settings", "values": )" + std::string(1'000'000, '[') + std::string(1'000'000, ']') + "}",
         SettingsFileState::Damaged},
        {FormatSettings(Nested(65)), SettingsFileState::Damaged}};
    for (const auto& row : rows) {
        const auto content = ReadSettingsFile(folder.Write("file", row.bytes));
        EXPECT_EQ(content.state, row.state) << row.bytes.substr(0, 100);
        EXPECT_FALSE(content.problem.empty());
    }
    EXPECT_EQ(ReadSettingsFile(folder / "missing").state, SettingsFileState::Missing);
    EXPECT_EQ(ReadSettingsFile(folder.Path()).state, SettingsFileState::Unreadable);
    std::filesystem::resize_file(folder.Write("huge", ""), kMaxSettingsBytes + 1);
    EXPECT_EQ(ReadSettingsFile(folder / "huge").state, SettingsFileState::Unreadable);
}

TEST(SettingsFile, WhatCouldNotBeReadBackIsNotWritten)
{
    const CTemporaryFolder folder;
    const auto path = folder / "file";
    ASSERT_TRUE(WriteSettingsFile(path, Nested(64)));
    EXPECT_EQ(ReadSettingsFile(path).record, Nested(64));
    EXPECT_EQ(platform::ProblemOf(WriteSettingsFile(path, Nested(65))), platform::FileProblem::NotARegularFile);
    CSettingsRecord large;
    large.PutBinary("bytes", std::string(kMaxSettingsBytes, 'x'));
    EXPECT_EQ(platform::ProblemOf(WriteSettingsFile(path, large)), platform::FileProblem::TooLarge);
    EXPECT_EQ(ReadSettingsFile(path).record, Nested(64)) << "the old file stays";
}
