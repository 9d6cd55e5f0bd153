#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "base/Names.h"
#include "platform/Clock.h"
#include "platform/Paths.h"
#include "support/TemporaryFolder.h"
#include "support/TestProcess.h"
#ifdef _WIN32
#include "platform/Windows_win.h"
#endif

TEST(System, AnAddressLeadsToItsModule)
{
    static const int kHere = 0;
    const auto program = platform::ExecutablePath();
    EXPECT_EQ(std::filesystem::path(program).filename(), std::string("platform_test") + platform::kProgramSuffix);
    EXPECT_EQ(platform::ModulePath(&kHere), program);
    EXPECT_EQ(platform::ModulePath(nullptr), "");
}

TEST(System, TheClockTellsThisDayOrTheOneBeside)
{
    const auto now = platform::LocalTimeNow().value();
    const auto days = [](const std::string& text) {
        using namespace std::chrono;
        const auto number = [&](std::size_t at, std::size_t count) { return std::stoi(text.substr(at, count)); };
        return sys_days(year(number(0, 4)) / number(5, 2) / number(8, 2)).time_since_epoch().count();
    };
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", now.year, now.month, now.day);
    EXPECT_LE(std::abs(days(text) - days(platform::UtcText(platform::NanosecondsSince1970()))), 1) << text;
    EXPECT_TRUE(now.hour >= 0 && now.hour < 24 && now.minute >= 0 && now.minute < 60 && now.second >= 0);
}

TEST(System, TimesAreUniversal)
{
    const struct {
        std::int64_t nanoseconds;
        const char* text;
    } rows[] = {{0, "1970-01-01T00:00:00Z"},
                {-1, "1969-12-31T23:59:59Z"},
                {1'709'208'000'999'999'999, "2024-02-29T12:00:00Z"}};
    for (const auto& row : rows) EXPECT_EQ(platform::UtcText(row.nanoseconds), row.text);
    EXPECT_GT(platform::UtcText(platform::NanosecondsSince1970()), "2025-01-01");
}

TEST(System, ApplicationDataIsTheConfiguredFolderOrTheUsersOwn)
{
    const CTemporaryFolder folder;
    folder.Write("file", "");
    const auto below = [&](const char* name, const char* further) { return folder / name + kSeparator + further; };
    const std::pair<std::string, std::string> rows[] = {{below("x", "y"), below("x", "y")},
                                                        {below("z", "") + kSeparator, folder / "z"},
                                                        {below("file", "below"), ""}};
    const CVariable home("HOME", folder.Path());
    for (const auto& [configured, expected] : rows) {
        const CVariable variable(platform::kApplicationDataVariable, configured);
        EXPECT_EQ(platform::ApplicationDataFolder(), expected);
        EXPECT_TRUE(expected.empty() || std::filesystem::is_directory(expected)) << expected;
    }
    for (const char* value : {"relative", ""}) {
        const CVariable variable(platform::kApplicationDataVariable, value);
        const auto own = platform::ApplicationDataFolder();
        EXPECT_TRUE(std::filesystem::path(own).is_absolute()) << own;
        EXPECT_TRUE(kSeparator == '\\' || own == folder / ".config") << own;
    }
}

#ifdef _WIN32

TEST(System, VariablesAreText)
{
    SetEnvironmentVariableW(L"FERRULE_TEST", L"\u00E4\U0001F600");
    EXPECT_EQ(platform::EnvironmentText("FERRULE_TEST"), "\xC3\xA4\xF0\x9F\x98\x80");
    EXPECT_EQ(platform::EnvironmentText("FERRULE_TEST_ABSENT"), "");
}

TEST(System, PathsBecomeAbsolute)
{
    const std::string here = std::filesystem::current_path().string();
    const struct {
        std::string typed, absolute;
    } rows[] = {{"C:\\a\\.\\b\\\\c\\..\\", "C:\\a\\b"},
                {"C:/a/b", "C:\\a\\b"},
                {"C:\\", "C:\\"},
                {"\\\\?\\C:\\a\\b", "C:\\a\\b"},
                {"\\\\server\\share\\a\\", "\\\\server\\share\\a"},
                {"//server/share/a", "\\\\server\\share\\a"},
                {"\\\\?\\UNC\\server\\share\\a", "\\\\server\\share\\a"},
                {"\\\\?\\Volume{0}\\a", "\\\\?\\Volume{0}\\a"},
                {"x\\y", here + "\\x\\y"}};
    for (const auto& row : rows) EXPECT_EQ(platform::AbsolutePath(row.typed), row.absolute) << row.typed;
}

TEST(System, AnAddressInALibraryLeadsToIt)
{
    const auto library =
        platform::ModulePath(reinterpret_cast<const void*>(GetProcAddress(GetModuleHandleA("kernel32"), "Sleep")));
    const auto name = library.substr(library.rfind('\\') + 1);
    EXPECT_TRUE(_stricmp(name.c_str(), "kernel32.dll") == 0 || _stricmp(name.c_str(), "kernelbase.dll") == 0)
        << library;
    EXPECT_TRUE(std::filesystem::exists(library));
}

#else

TEST(System, AnAddressInALibraryLeadsToIt)
{
    const auto library = platform::ModulePath(reinterpret_cast<const void*>(&std::getenv));
    EXPECT_NE(library.find("/libc"), std::string::npos) << library;
}

TEST(System, PathsBecomeAbsoluteWithoutGuessingWhereLinksLead)
{
    const CTemporaryFolder folder;
    const std::string inside = std::filesystem::canonical(folder.MakeFolder("far/inside")).string();
    std::filesystem::create_directory_symlink(inside, folder / "link");
    EXPECT_EQ(platform::AbsolutePath(folder / "link/.."), std::filesystem::path(inside).parent_path().string());
    EXPECT_EQ(platform::AbsolutePath(folder / "link"), folder / "link");
    EXPECT_EQ(platform::AbsolutePath(folder.Path() + "/./a//b/"), folder / "a/b");
    EXPECT_EQ(platform::AbsolutePath(folder.Path() + "/no/../such"), folder.Path() + "/no/../such");
    EXPECT_EQ(platform::AbsolutePath("x"), (std::filesystem::current_path() / "x").string());
    EXPECT_EQ(platform::AbsolutePath("/"), "/");
}

TEST(System, LocalTimeFollowsTheTimeZone)
{
    const auto hourIn = [](const char* zone) {
        const CVariable variable("TZ", zone);
        tzset();
        return platform::LocalTimeNow().value().hour;
    };
    const int utc = hourIn("UTC0"), east = hourIn("XXX-5");
    EXPECT_TRUE((east - utc + 24) % 24 == 5 || (east - utc + 24) % 24 == 6) << "the hour may turn in between";
}

#endif
