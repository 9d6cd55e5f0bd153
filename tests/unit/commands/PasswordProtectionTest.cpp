#include "commands/PasswordProtection.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

std::string Repeated(const std::string& piece, int times)
{
    std::string text;
    while (times-- > 0) text += piece;
    return text;
}

}  // namespace

TEST(PasswordProtection, MethodCountsFromHostVersion9On)
{
    const struct {
        int method, hostMajor, keyLength, revision, cryptMethod;
    } rows[] = {{0, 21, 16, 0, 0}, {1, 21, 16, 3, 2},         {2, 21, 16, 4, 6}, {3, 21, 32, 5, 7},
                {4, 21, 16, 0, 0}, {-1, 21, 16, 0, 0},        {1, 9, 16, 3, 2},  {3, 9, 32, 5, 7},
                {3, 10, 32, 5, 7}, {1, 8, 16, 0, 0},          {3, 8, 16, 0, 0},  {2, 5, 16, 0, 0},
                {3, 6, 16, 0, 0},  {2147483647, 11, 16, 0, 0}};
    for (const auto& row : rows) {
        SecuritySettings settings;
        settings.encryptionMethod = row.method;
        const StandardSecurityRequest request = MakeSecurityRequest(settings, "a.pdf", row.hostMajor);
        const auto what = testing::Message() << "method " << row.method << ", host " << row.hostMajor;
        EXPECT_EQ(request.keyLengthBytes, row.keyLength) << what;
        EXPECT_EQ(request.revision, row.revision) << what;
        EXPECT_EQ(request.cryptMethod, row.cryptMethod) << what;
    }
}

TEST(PasswordProtection, PasswordsAreTrimmedAndCut)
{
    const std::string e = "\xC3\xA9";             // two bytes
    const std::string rare = "\xF0\x9F\x94\x91";  // four bytes
    const struct {
        std::string given, used;
    } rows[] = {{"  p q\t\r\n", "p q"},
                {"    ", ""},
                {std::string(255, 'x'), std::string(255, 'x')},
                {std::string(300, 'x'), std::string(255, 'x')},
                {"  " + std::string(255, 'x') + "  ", std::string(255, 'x')},
                {Repeated(e, 128), Repeated(e, 127)},
                {"x" + Repeated(e, 128), "x" + Repeated(e, 127)},
                {Repeated(rare, 64), Repeated(rare, 63)},
                {std::string(300, '\x80'), std::string(255, '\x80')}};
    for (const auto& row : rows) {
        SecuritySettings settings;
        settings.password = settings.permPassword = row.given;
        const StandardSecurityRequest request = MakeSecurityRequest(settings, "a.pdf", 21);
        EXPECT_EQ(request.openPassword, row.used);
        EXPECT_EQ(request.permissionsPassword, row.used);
    }
}

TEST(PasswordProtection, LookupTableReplacesTheOpenPasswordOfListedFilesOnly)
{
    SecuritySettings settings;
    settings.password = "global";
    settings.permPassword = "permissions";
    settings.canPrint = false;
    settings.fileMapping = {{"listed.pdf", " own "}};
    const struct {
        bool useTable;
        const char* fileName;
        const char* password;
    } rows[] = {{true, "LISTED.pdf", "own"}, {true, "other.pdf", "global"}, {false, "listed.pdf", "global"}};
    for (const auto& row : rows) {
        settings.useFileMapping = row.useTable;
        const StandardSecurityRequest request = MakeSecurityRequest(settings, row.fileName, 21);
        EXPECT_EQ(request.openPassword, row.password) << row.fileName;
        EXPECT_EQ(request.permissionsPassword, "permissions");
        EXPECT_EQ(request.permissions, 0xFFFFFFFBu);
    }
}

TEST(PasswordProtection, NoPasswordStandsInForOneThatShouldComeFromElsewhere)
{
    const auto listed = [](const char* name, const char* password) {
        return [=](SecuritySettings& s) { s.fileMapping = {{name, password}}; };
    };
    const struct {
        const char* name;
        std::function<void(SecuritySettings&)> change;
        bool problem;
    } rows[] = {
        {"passwords of the record", [](SecuritySettings&) {}, false},
        {"open password from data", [](SecuritySettings& s) { s.useDataSourceForOpenPassword = true; }, true},
        {"permissions password from data", [](SecuritySettings& s) { s.useDataSourceForPermissionsPassword = true; },
         true},
        {"field without its flag", [](SecuritySettings& s) { s.passwordField = "field"; }, false},
        {"from the text", [](SecuritySettings& s) { s.searchForPassword = true; }, true},
        {"from the text, and nothing else wanted", [](SecuritySettings& s) { s = {}, s.searchForPassword = true; },
         true},
        {"from an area", [](SecuritySettings& s) { s.extractPasswordFromPage = true; }, true},
        {"listed", listed("A.pdf", "x"), false},
        {"listed without a value", listed("A.pdf", ""), true},
        {"listed with blanks", listed("A.pdf", " \t"), true},
        {"table not used",
         [](SecuritySettings& s) {
             s.fileMapping = {{"A.pdf", ""}}, s.useFileMapping = false;
         },
         false},
        {"another file listed without a value", listed("b.pdf", ""), false},
    };
    for (const auto& row : rows) {
        SecuritySettings settings;
        settings.passwordProtect = settings.useFileMapping = true;
        settings.password = "global";
        row.change(settings);
        EXPECT_EQ(!PasswordSourceProblem(settings, "a.pdf").empty(), row.problem) << row.name;
    }
}
