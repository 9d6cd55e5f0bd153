#include <vector>

#include <gtest/gtest.h>

#include "common/SettingsFile.h"
#include "host/AppSettings.h"
#include "support/MemoryLog.h"
#include "support/TemporaryFolder.h"

namespace {

// A file of the next version, made from one of ours.
std::string NewerFile()
{
    CSettingsRecord record;
    record.PutBool("AllowLogging", false);
    std::string bytes = FormatSettings(record);
    const std::string key = "\"version\": ";
    bytes[bytes.find(key) + key.size()] = '9';
    return bytes;
}

std::string Repeated(const std::string& piece, int times)
{
    std::string text;
    while (times-- > 0) text += piece;
    return text;
}

}  // namespace

TEST(AppSettings, FirstRunStillSavesBothSettings)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "Ferrule.cfs";
    CMemoryLog log;
    EXPECT_FALSE(SaveAppSettings(folder / "missing/Ferrule.cfs", {}, log));
    EXPECT_EQ(log.lines.size(), 1u) << "a failed save is logged";
    log.lines.clear();
    EXPECT_TRUE(LoadAppSettings(path).allowLogging);
    ASSERT_TRUE(SaveAppSettings(path, LoadAppSettings(path), log));
    EXPECT_TRUE(log.lines.empty());

    const SettingsFileContent file = ReadSettingsFile(path);
    ASSERT_TRUE(file.Ok()) << file.problem;
    EXPECT_TRUE(file.record.Bool("AllowLogging", false));
    ASSERT_NE(file.record.Record("PasswordProtectFiles"), nullptr);
    EXPECT_NE(file.record.Record("PasswordProtectFiles")->Record("SecuritySettings"), nullptr);

    const std::string whole = FileBytes(path);
    folder.Write("Ferrule.cfs", whole.substr(0, whole.size() / 2));
    ASSERT_EQ(ReadSettingsFile(path).state, SettingsFileState::Damaged);
    EXPECT_TRUE(SaveAppSettings(path, {}, log)) << "a damaged file of ours is replaced";
    EXPECT_EQ(FileBytes(path), whole);
}

TEST(AppSettings, SavingKeepsWhatOthersStored)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "Ferrule.cfs";
    CSettingsRecord before;
    before.PutString("SomeTool", "kept");
    ASSERT_TRUE(WriteSettingsFile(path, before).Ok());

    AppSettings settings;
    settings.allowLogging = false;
    settings.passwordTool.password = "secret";
    settings.passwordTool.canExtractPages = true;
    CMemoryLog log;
    ASSERT_TRUE(SaveAppSettings(path, settings, log));
    ASSERT_TRUE(SaveAppSettings(path, LoadAppSettings(path), log));

    EXPECT_EQ(ReadSettingsFile(path).record.String("SomeTool"), "kept");
    EXPECT_FALSE(LoadAppSettings(path).allowLogging);
    EXPECT_TRUE(LoadAppSettings(path).passwordTool == settings.passwordTool);
}

TEST(AppSettings, AFileThatIsNotOursStaysAsItIs)
{
    const struct {
        const char* name;
        std::string bytes;
    } rows[] = {{"foreign", "another program's file\n"}, {"newer", NewerFile()}};
    for (const auto& row : rows) {
        const CTemporaryFolder folder;
        const std::string path = folder.Write("Ferrule.cfs", row.bytes);
        CMemoryLog log;
        EXPECT_TRUE(LoadAppSettings(path).allowLogging) << row.name;
        EXPECT_FALSE(SaveAppSettings(path, {}, log)) << row.name;
        EXPECT_EQ(FileBytes(path), row.bytes) << row.name;
        ASSERT_EQ(log.lines.size(), 1u) << row.name;
        EXPECT_EQ(log.lines[0].rfind("Settings are not saved : ", 0), 0u) << log.lines[0];
    }
}

TEST(AppPaths, HelpFileFollowsTheUpperCasedModulePath)
{
    const std::string longPath = "/" + std::string(250, 'a') + "/ferrule.api";
    const std::string accents = "/" + Repeated("\xC3\xA9", 255);
    const struct {
        std::string module, modulePath, helpFile;
    } rows[] = {{"/opt/host/Ferrule.api", "/OPT/HOST/FERRULE.API", "/OPT/HOST/FERRULE.CHM"},
                {"/opt/x.api/y.Api", "/OPT/X.API/Y.API", "/OPT/X.CHM/Y.CHM"},
                {"/opt/ferrule.so", "/OPT/FERRULE.SO", "/OPT/FERRULE.SO"},
                {"/\xC3\xA9\xC3\x9F\xC3\xBF\xD0\xB6.api", "/\xC3\x89\xC3\x9F\xC5\xB8\xD0\x96.API",
                 "/\xC3\x89\xC3\x9F\xC5\xB8\xD0\x96.CHM"},
                {"/\xE9.api", "/\xE9.API", "/\xE9.CHM"},
                {accents, "/" + Repeated("\xC3\x89", 254), "/" + Repeated("\xC3\x89", 254)},
                {longPath, "/" + std::string(250, 'A') + "/FER", "/" + std::string(250, 'A') + "/FER"},
                {"", "", ""}};
    for (const auto& row : rows) {
        const AppPaths paths = MakeAppPaths(row.module, "/data");
        EXPECT_EQ(paths.modulePath, row.modulePath);
        EXPECT_EQ(paths.helpFile, row.helpFile);
    }
}
