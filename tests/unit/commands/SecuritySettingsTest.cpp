#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "commands/SecuritySettings.h"

namespace {

std::string Repeated(const std::string& piece, int times)
{
    std::string text;
    while (times-- > 0) text += piece;
    return text;
}

SecuritySettings NothingAllowed()
{
    SecuritySettings s;
    s.canCopy = s.canEdit = s.canEditNotes = s.canPrint = s.canFillForms = s.canAssemble = s.canCreateTemplates =
        s.hiResPrinting = s.canExtractPages = false;
    return s;
}

// Every field differs from both of its defaults.
SecuritySettings Unusual()
{
    SecuritySettings s = NothingAllowed();
    s.encryptionMethod = 3;
    s.passwordProtect = true;
    s.password = "open\xC3\xA9 ";
    s.permPassword = "permissions";
    s.useDataSourceForOpenPassword = true;
    s.passwordField = "field 1";
    s.useDataSourceForPermissionsPassword = true;
    s.permPasswordField = "field 2";
    s.allowAll = true;
    s.canExtractPages = true;
    s.fileMapping = {{"a.pdf", "first"}, {"b.pdf", ""}};
    s.useFileMapping = true;
    s.searchRegex = "\\d+";
    s.searchRegexFormat = "$1";
    s.searchForPassword = true;
    s.firstPageToSearch = 2;
    s.lastPageToSearch = 7;
    s.extractionArea = {.left = 1.5, .right = 100, .top = 200.25, .bottom = -3};
    s.extractPasswordFromPage = true;
    return s;
}

}  // namespace

TEST(SecuritySettings, EveryFieldSurvivesWritingAndReadingUnderItsFixedKey)
{
    SecuritySettings expected;
    EXPECT_TRUE(expected.canExtractPages);
    expected.canExtractPages = false;
    EXPECT_TRUE(ReadSecuritySettings({}) == expected) << "absent keys give a fresh record except for extraction";
    EXPECT_EQ(ReadSecuritySettings({}).lastPageToSearch, -1);
    EXPECT_TRUE(ReadSecuritySettings(WriteSecuritySettings(Unusual())) == Unusual());
    EXPECT_TRUE(ReadSecuritySettings(WriteSecuritySettings({})) == SecuritySettings{});
    std::string keys;
    const CSettingsRecord record = WriteSecuritySettings({});
    for (const auto& entry : record.Entries()) keys += entry.key + ' ';
    EXPECT_EQ(
        keys,
        "EncryptionMethod PasswordProtect Password PermPassword UseDataSourceForOpenPassword PasswordField "
        "UseDataSourceForPermissionsPassword PermPasswordField CanCopy CanEdit CanEditNotes CanPrint CanFillForms "
        "CanAssemble CanCreateTemplates AllowAll HiResPrinting CanExtractPages FileMapping UseFileMapping "
        "SearchRegex SearchRegexFormat SearchForPassword FirstPageToSearch LastPageToSearch ExtractionArea "
        "ExtractPasswordFromPage ");
}

TEST(SecuritySettings, PasswordsMayBeWideAndLoseTheirLeadingBlanksOnly)
{
    CSettingsRecord record;
    record.PutWide("Password", " \t\r\n p \xE2\x82\xAC ");
    record.PutString("PermPassword", "  q ");
    record.PutInt("SearchRegex", 5);
    const SecuritySettings settings = ReadSecuritySettings(record);
    EXPECT_EQ(settings.password, "p \xE2\x82\xAC ");
    EXPECT_EQ(settings.permPassword, "q ");
    EXPECT_EQ(settings.searchRegex, "");
}

TEST(SecuritySettings, EachPermissionSetsItsOwnBits)
{
    const struct {
        const char* name;
        bool SecuritySettings::*flag;
        std::uint32_t word;
    } rows[] = {{"nothing", nullptr, 0xFFFDF243},
                {"all", &SecuritySettings::allowAll, 0xFFFFFFFF},
                {"copy", &SecuritySettings::canCopy, 0xFFFDF253},
                {"edit", &SecuritySettings::canEdit, 0xFFFDF24B},
                {"notes", &SecuritySettings::canEditNotes, 0xFFFDF263},
                {"print", &SecuritySettings::canPrint, 0xFFFDF247},
                {"forms", &SecuritySettings::canFillForms, 0xFFFDF343},
                {"templates", &SecuritySettings::canCreateTemplates, 0xFFFFF243},
                {"assemble", &SecuritySettings::canAssemble, 0xFFFDF643},
                {"high resolution", &SecuritySettings::hiResPrinting, 0xFFFDFA43},
                {"extract", &SecuritySettings::canExtractPages, 0xFFFDF2C3}};
    for (const auto& row : rows) {
        SecuritySettings settings = NothingAllowed();
        if (row.flag != nullptr) settings.*row.flag = true;
        EXPECT_EQ(PermissionWord(settings), row.word) << row.name;
    }
    EXPECT_EQ(PermissionWord({}), 0xFFFFFFFF);
    EXPECT_EQ(PermissionWord(ReadSecuritySettings({})), 0xFFFFFF7F) << "absent keys forbid extraction";
}

TEST(SecuritySettings, WorkIsThereForRestrictionsOrForPasswordsThatAreAskedFor)
{
    const struct {
        const char* name;
        void (*change)(SecuritySettings&);
        bool work;
    } rows[] = {
        {"nothing", [](SecuritySettings&) {}, false},
        {"a restriction alone", [](SecuritySettings& s) { s.canPrint = false; }, true},
        {"a restriction lifted by all", [](SecuritySettings& s) { s.canPrint = false, s.allowAll = true; }, false},
        {"a password that is not asked for", [](SecuritySettings& s) { s.password = "p"; }, false},
        {"asked for without a password", [](SecuritySettings& s) { s.passwordProtect = true; }, false},
        {"open password", [](SecuritySettings& s) { s.passwordProtect = true, s.password = "p"; }, true},
        {"permissions password", [](SecuritySettings& s) { s.passwordProtect = true, s.permPassword = "p"; }, true},
        {"open password from data",
         [](SecuritySettings& s) { s.passwordProtect = s.useDataSourceForOpenPassword = true; }, true},
        {"permissions password from data",
         [](SecuritySettings& s) { s.passwordProtect = s.useDataSourceForPermissionsPassword = true; }, true},
        {"lookup table alone", [](SecuritySettings& s) { s.passwordProtect = s.useFileMapping = true; }, false},
    };
    for (const auto& row : rows) {
        SecuritySettings settings;
        row.change(settings);
        EXPECT_EQ(HasSecurityWork(settings), row.work) << row.name;
    }
}

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

TEST(PasswordProtection, LookupTableReplacesTheOpenPasswordOfListedFilesInAnyLetterCase)
{
    SecuritySettings settings;
    settings.password = "global";
    settings.permPassword = "permissions";
    settings.canPrint = false;
    settings.useFileMapping = true;
    settings.fileMapping = {{"report.pdf", " own "}, {"UPPER.PDF", "two"},           {"\u00DCber.pdf", "three"},
                            {"\u0416.pdf", "four"},  {"\xFFraw.pdf", "five"},  // no UTF-8
                            {"empty.pdf", ""},       {"REPORT.pdf", "never reached"}};
    const struct {
        const char *name, *password;
    } rows[] = {{"Report.PDF", "own"},        {"upper.pdf", "two"},    {"\u00FCBER.pdf", "three"},
                {"\u0436.PDF", "four"},       {"\xFFRAW.pdf", "five"}, {"empty.pdf", ""},
                {"/in/report.pdf", "global"}, {"other.pdf", "global"}, {"", "global"}};
    for (const auto& row : rows) {
        const StandardSecurityRequest request = MakeSecurityRequest(settings, row.name, 21);
        EXPECT_EQ(request.openPassword, row.password) << row.name;
        EXPECT_EQ(request.permissionsPassword, "permissions");
        EXPECT_EQ(request.permissions, 0xFFFFFFFBu);
    }
    settings.useFileMapping = false;
    EXPECT_EQ(MakeSecurityRequest(settings, "report.pdf", 21).openPassword, "global");
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
