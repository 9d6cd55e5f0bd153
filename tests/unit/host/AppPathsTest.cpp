#include "host/AppPaths.h"

#include <gtest/gtest.h>

namespace {

std::string Repeated(const std::string& piece, int times)
{
    std::string text;
    while (times-- > 0) text += piece;
    return text;
}

}  // namespace

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
