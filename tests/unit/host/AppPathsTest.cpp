#include "host/AppPaths.h"

#include <gtest/gtest.h>

TEST(AppPaths, HelpFileFollowsTheUpperCasedModulePath)
{
    const std::string longPath = "/" + std::string(250, 'a') + "/ferrule.api";
    const struct {
        std::string module, modulePath, helpFile;
    } rows[] = {{"/opt/host/Ferrule.api", "/OPT/HOST/FERRULE.API", "/OPT/HOST/FERRULE.CHM"},
                {"/opt/x.api/y.Api", "/OPT/X.API/Y.API", "/OPT/X.CHM/Y.CHM"},
                {"/opt/ferrule.so", "/OPT/FERRULE.SO", "/OPT/FERRULE.SO"},
                {"/\xC3\xA9.api", "/\xC3\xA9.API", "/\xC3\xA9.CHM"},
                {longPath, "/" + std::string(250, 'A') + "/FER", "/" + std::string(250, 'A') + "/FER"},
                {"", "", ""}};
    for (const auto& row : rows) {
        const AppPaths paths = MakeAppPaths(row.module, "/data");
        EXPECT_EQ(paths.modulePath, row.modulePath);
        EXPECT_EQ(paths.helpFile, row.helpFile);
    }
}

TEST(AppPaths, FilesStandInThePerUserFolder)
{
    const AppPaths paths = MakeAppPaths("", "/data/me");
    EXPECT_EQ(paths.settingsFolder, "/data/me/Quillon/Ferrule/");
    EXPECT_EQ(paths.settingsFile, "/data/me/Quillon/Ferrule/Ferrule.cfs");
    EXPECT_EQ(paths.searchSettingsFile, "/data/me/Quillon/Ferrule/FerruleSearchSettings.cfs");
    EXPECT_EQ(paths.logFile, "/data/me/Quillon/Ferrule/FerruleLog.txt");
    EXPECT_TRUE(paths.logFileEnabled);
    EXPECT_EQ(MakeAppPaths("", "").settingsFolder, "/Quillon/Ferrule/");
}
