#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include "base/PathNames.h"
#include "platform/Clock.h"
#include "platform/Paths.h"
#include "support/TemporaryFolder.h"
#include "support/TestProcess.h"

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
