#include <functional>

#include "base/Names.h"
#include "common/SettingsRecord.h"
#include "hostapi/HostConstants.h"
#include "hostapi/HostErrors.h"
#include "hostcalls/Cab.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "openhost/files/FilePaths.h"
#include "unit/hostcalls/HostedCalls.h"

namespace {

class CabCalls : public CHostedCalls {};
class HostPath : public CHostedCalls {};
class CabFile : public CHostedCalls {};

const std::string kZeros("a\0b\0", 4);

CCab OneOfEach()
{
    CCab cab;
    cab.PutBool("bool", true);
    cab.PutInt("int", -7);
    cab.PutDouble("double", 0.5);
    cab.PutAtom("atom", Atom("DOS"));
    cab.PutString("string", "caf\xC3\xA9");
    cab.PutText("text", "\xF0\x9D\x84\x9E clef");  // beyond 16 bits
    cab.PutBinary("binary", kZeros);
    cab.PutNull("null");
    cab.PutPointer("pointer", "PDDoc", &cab);
    CCab nested;
    nested.PutInt("deep", 1);
    cab.PutCab("cab", std::move(nested));
    cab.PutString("empty string", "");
    cab.PutText("empty text", "");
    cab.PutBinary("empty binary", "");
    return cab;
}

}  // namespace

TEST_F(CabCalls, EveryTypeComesBackAsItWasPut)
{
    const CCab cab = OneOfEach();
    EXPECT_TRUE(cab.Bool("bool", false));
    EXPECT_EQ(cab.Int("int", 0), -7);
    EXPECT_EQ(cab.Double("double", 0), 0.5);
    EXPECT_EQ(cab.Double("int", 0), -7);
    EXPECT_EQ(AtomText(cab.Atom("atom").value()), "DOS");
    EXPECT_EQ(cab.String("string"), "caf\xC3\xA9");
    EXPECT_EQ(cab.Text("text"), "\xF0\x9D\x84\x9E clef");
    EXPECT_EQ(cab.Binary("binary"), kZeros);
    EXPECT_EQ(cab.Cab("cab").Int("deep", 0), 1);
    EXPECT_EQ(cab.Int("cab:deep", 0), 1);
    EXPECT_TRUE(cab.Known("null"));
    EXPECT_EQ(cab.Type("null"), kASValueNull);
    EXPECT_EQ(cab.String("empty string"), "") << "which is not an absent one";
    EXPECT_EQ(cab.Text("empty text"), "");
    EXPECT_EQ(cab.Binary("empty binary"), "");
    EXPECT_EQ(cab.Size(), 13);
}

TEST_F(CabCalls, AbsentKeysWrongTypesAndNullViewsAnswerTheFallback)
{
    const CCab cab = OneOfEach();
    const struct {
        const char* what;
        CCabView view;
        const char* key;
    } rows[] = {{"absent key", cab, "nothing"}, {"null value", cab, "null"}, {"null view", CCabView(), "bool"}};
    for (const auto& row : rows) {
        EXPECT_TRUE(row.view.Bool(row.key, true)) << row.what;
        EXPECT_EQ(row.view.Int(row.key, 3), 3) << row.what;
        EXPECT_EQ(row.view.Double(row.key, 4), 4) << row.what;
        EXPECT_FALSE(row.view.Atom(row.key)) << row.what;
        EXPECT_FALSE(row.view.String(row.key)) << row.what;
        EXPECT_FALSE(row.view.StringOrText(row.key)) << row.what;
        EXPECT_FALSE(row.view.Binary(row.key)) << row.what;
        EXPECT_FALSE(row.view.Cab(row.key)) << row.what;
        EXPECT_EQ(row.view.Cab(row.key).Cab("further").Int("down", 5), 5) << row.what;
    }
    EXPECT_EQ(cab.Int("bool", 3), 3);
    EXPECT_FALSE(cab.String("text"));
    EXPECT_FALSE(cab.Text("string"));
    EXPECT_EQ(cab.StringOrText("text"), "\xF0\x9D\x84\x9E clef");
    EXPECT_EQ(CCabView().Size(), 0);
    EXPECT_TRUE(CCabView().Keys().empty());
    EXPECT_EQ(CCabView().Copy().Size(), 0);
}

TEST_F(CabCalls, WhatTheHostRefusesToTakeStaysOurs)
{
    CCab cab;
    CCab value;
    value.PutInt("kept", 1);
    const struct {
        const char* type;
        std::function<void()> put;
    } rows[] = {
        {"string", [&] { cab.PutString("", "x"); }},
        {"text", [&] { cab.PutText("", "x"); }},
        {"binary", [&] { cab.PutBinary("", "x"); }},
        {"cab", [&] { cab.PutCab("", std::move(value)); }},
    };
    for (const auto& row : rows) {
        const auto error = CatchHostError(row.put);
        ASSERT_TRUE(error) << row.type;
        EXPECT_TRUE(error->Is(genErrBadParm)) << row.type;
    }
    EXPECT_EQ(cab.Size(), 0);
    EXPECT_EQ(value.Int("kept", 0), 1);
}

TEST_F(CabCalls, CopiesStandAloneAndCopyFromKeepsOtherKeys)
{
    CCab source = OneOfEach();
    const CCab copy = source.Copy();
    source.EditCab("cab").PutInt("deep", 2);
    EXPECT_EQ(copy.Int("cab:deep", 0), 1);

    CCab target;
    target.PutInt("int", 100);
    target.PutInt("other", 200);
    target.CopyFrom(source);
    target.CopyFrom(CCabView());
    EXPECT_EQ(target.Int("int", 0), -7);
    EXPECT_EQ(target.Int("other", 0), 200);
    target.Remove("other");
    EXPECT_FALSE(target.Known("other"));
    target.MakeEmpty();
    EXPECT_EQ(target.Size(), 0);
}

TEST_F(CabCalls, SettingsRecordsSurviveTheWayThroughACab)
{
    CSettingsRecord nested;
    nested.PutString("0", "first");
    nested.PutRecord("empty", CSettingsRecord());
    CSettingsRecord record;
    record.PutBool("bool", true);
    record.PutInt("int", -1);
    record.PutDouble("double", 1e300);
    record.PutString("string", "raw \x80");  // not UTF-8: strings are bytes
    record.PutWide("wide", "\xE2\x82\xAC");
    record.PutAtom("name", "DOS");
    record.PutBinary("binary", kZeros);
    record.PutNull("null");
    record.PutRecord("record", nested);
    EXPECT_TRUE(RecordFromCab(CabFromRecord(record)) == record);

    const CSettingsRecord fromCab = RecordFromCab(OneOfEach());
    EXPECT_EQ(fromCab.AnyText("atom"), "DOS");
    EXPECT_FALSE(fromCab.Known("pointer"));
    EXPECT_EQ(fromCab.Entries().size(), 12u);
}

TEST_F(CabCalls, TextsKeepEveryCharacterAndReplaceWhatIsNone)
{
    const struct {
        const char* in;
        const char* out;
    } rows[] = {{"", ""}, {"plain", "plain"}, {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"}, {"a\x80z", "a\xEF\xBF\xBDz"}};
    for (const auto& row : rows) EXPECT_EQ(CHostText::FromNarrow(row.in).ToNarrow(), row.out);
    EXPECT_EQ(CHostText::FromUtf8("\xE2\x82\xACz\xCE\xA9").ToPdText(), std::string("\xFE\xFF\x20\xAC\0z\x03\xA9", 8));
    EXPECT_EQ(CHostText::FromUtf8("caf\xC3\xA9").ToPdText(), "caf\xE9");
    EXPECT_EQ(AtomText(kNullAtom), "");
    EXPECT_EQ(AtomText(Atom("x y")), "x y");
}

TEST_F(HostPath, NamesGoToTheHostAndBackByteForByte)
{
    std::vector<const char*> names = {"plain.pdf", "two  blanks.pdf", "caf\xC3\xA9.pdf", "per%20cent.pdf", "dots..."};
    if (kSeparator == '/') names.insert(names.end(), {"\"quoted\".pdf", "broken \xC3.pdf", "a:b.pdf", "a\\b"});
    for (const char* name : names) {
        const std::string path = m_folder / name;
        const CHostPath hostPath = CHostPath::FromNative(path);
        EXPECT_EQ(hostPath.ToNative(), path);
        const auto again = CHostPath::FromDIPath(hostPath.ToDIPath());
        ASSERT_TRUE(again) << name;
        EXPECT_EQ(again->ToNative(), path);
        EXPECT_EQ(NativeFromPathCab(PathCab(path)), path);
    }
    const auto error = CatchHostError([&] { (void)CHostPath::FromNative(std::string("/tmp/a\0b", 8)); });
    ASSERT_TRUE(error) << "a zero byte must not cut the path";
    EXPECT_TRUE(error->Is(genErrBadParm));
}

TEST_F(HostPath, APathCabHoldsItsThreeKeysAndIsReadFromTheFirstThatIsThere)
{
    const CCab written = PathCab(m_folder / "a b.pdf");
    EXPECT_EQ(written.Keys(), (std::vector<std::string>{"DI", "DIText", "FS"}));
    EXPECT_EQ(AtomText(written.Atom("FS").value()), "DOS");
    const std::string stored = openhost::CFilePath(m_folder / "a b.pdf").DeviceIndependent();
    EXPECT_EQ(written.String("DI"), stored);
    EXPECT_EQ(written.Text("DIText"), stored);

    const auto native = [](const char* text) { return openhost::NativeFromDeviceIndependent(text, nullptr); };
    const struct {
        const char *di, *diPath, *diText;
        std::optional<std::string> expected;
    } rows[] = {
        {"/C/a", "/C/b", "/C/c", native("/C/a")},   {nullptr, "/C/b", "/C/c", native("/C/b")},
        {nullptr, nullptr, "/C/c", native("/C/c")}, {"", "", "/C/c", native("/C/c")},
        {nullptr, nullptr, nullptr, std::nullopt},  {nullptr, nullptr, "", std::nullopt},
    };
    for (const auto& row : rows) {
        CCab cab;
        if (row.di) cab.PutString("DI", row.di);
        if (row.diPath) cab.PutText("DIPath", row.diPath);
        if (row.diText) cab.PutText("DIText", row.diText);
        EXPECT_EQ(NativeFromPathCab(cab), row.expected) << row.expected.value_or("nothing");
    }
    EXPECT_EQ(NativeFromPathCab(CCabView()), std::nullopt);
}

TEST_F(CabFile, WhatIsWrittenIsReadBackEqual)
{
    CSettingsRecord record;
    record.PutString("string", std::string(100'000, 's'));
    record.PutWide("wide", "\xF0\x9D\x84\x9E");
    record.PutBinary("binary", std::string("\0\x1A\r\n", 4));
    const std::string path = m_folder / "some file.sequ";
    ASSERT_TRUE(WriteCabFile(path, CabFromRecord(record)));
    auto read = ReadCabFile(path);
    ASSERT_TRUE(read) << read.Error();
    EXPECT_TRUE(RecordFromCab(*read) == record);

    CCab shorter;
    shorter.PutInt("int", 1);
    ASSERT_TRUE(WriteCabFile(path, shorter));
    auto readShorter = ReadCabFile(path);
    ASSERT_TRUE(readShorter) << readShorter.Error();
    EXPECT_EQ(readShorter->Keys(), std::vector<std::string>{"int"});
}

TEST_F(CabFile, WhatIsNoCabIsRefusedWithASentenceAndClosed)
{
    const struct {
        const char* what;
        std::string path;
    } rows[] = {
        {"missing", m_folder / "missing.sequ"},
        {"folder", m_folder.MakeFolder("folder.sequ")},
        {"empty", m_folder.Write("empty.sequ", "")},
        {"XML", m_folder.Write("xml.sequ", "<?xml version=\"1.0\"?><Workflow/>")},
        {"garbage", m_folder.Write("garbage.sequ", std::string(5000, '\xFF'))},
        {"empty name", ""},
    };
    for (const auto& row : rows) {
        const auto read = ReadCabFile(row.path);
        ASSERT_FALSE(read) << row.what;
        EXPECT_NE(read.Error(), "") << row.what;
        EXPECT_EQ(openhost::LiveFiles() + openhost::LiveStreams(), 0u) << row.what;
    }
    EXPECT_FALSE(WriteCabFile(m_folder / "no such folder/x.sequ", CCab()));
}
