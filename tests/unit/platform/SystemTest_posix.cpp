#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "platform/Clock.h"
#include "platform/Paths.h"
#include "support/TemporaryFolder.h"
#include "support/TestProcess.h"

namespace {

/// Sets a variable for one test; empty text removes it.
class CVariable {
public:
    CVariable(const char* name, const std::string& value) : m_name(name)
    {
        if (const char* before = std::getenv(name)) m_before = before;
        Set(value);
    }
    ~CVariable() { Set(m_before); }

private:
    void Set(const std::string& value) { SetVariable(m_name, value); }

    const char* m_name;
    std::string m_before;
};

}  // namespace

TEST(SystemPosix, ApplicationDataIsTheConfiguredFolderOrTheOneInTheHome)
{
    const CTemporaryFolder folder;
    const std::string root = folder.Path();
    folder.Write("file", "");
    const struct {
        std::string configured, home, expected;
    } rows[] = {
        {root + "/x/y", root, root + "/x/y"},   {root + "/z//", root, root + "/z"},
        {"", root + "/h", root + "/h/.config"}, {"relative", root, root + "/.config"},
        {root + "/file/below", root, ""},
    };
    for (const auto& row : rows) {
        const CVariable configured("XDG_CONFIG_HOME", row.configured), home("HOME", row.home);
        EXPECT_EQ(platform::ApplicationDataFolder(), row.expected);
        EXPECT_TRUE(row.expected.empty() || std::filesystem::is_directory(row.expected)) << row.expected;
    }
}

TEST(SystemPosix, AnAddressInALibraryLeadsToIt)
{
    const auto library = platform::ModulePath(reinterpret_cast<const void*>(&std::getenv));
    EXPECT_NE(library.find("/libc"), std::string::npos) << library;
}

TEST(SystemPosix, PathsBecomeAbsoluteWithoutGuessingWhereLinksLead)
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

TEST(SystemPosix, LocalTimeFollowsTheTimeZone)
{
    const auto hourIn = [](const char* zone) {
        const CVariable variable("TZ", zone);
        tzset();
        return platform::LocalTimeNow().value().hour;
    };
    const int utc = hourIn("UTC0"), east = hourIn("XXX-5");
    EXPECT_TRUE((east - utc + 24) % 24 == 5 || (east - utc + 24) % 24 == 6) << "the hour may turn in between";
}
