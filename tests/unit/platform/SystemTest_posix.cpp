#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "platform/Clock.h"
#include "platform/Paths.h"
#include "support/TemporaryFolder.h"
#include "support/TestProcess.h"

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
