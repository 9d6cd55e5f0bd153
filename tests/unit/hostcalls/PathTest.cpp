#include "base/PathNames.h"
#include "hostcalls/HostPath.h"

#include "common/SettingsRecord.h"
#include "hostapi/HostErrors.h"
#include "hostcalls/Atoms.h"
#include "hostcalls/CabFile.h"
#include "hostcalls/CabRecord.h"
#include "hostcalls/HostFrame.h"
#include "openhost/files/FilePaths.h"
#include "unit/hostcalls/HostedCalls.h"

#include <filesystem>

class HostPath : public CHostedCalls {};
class CabFile : public CHostedCalls {};

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
