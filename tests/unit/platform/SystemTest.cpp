#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "platform/Clock.h"
#include "platform/Environment.h"
#include "platform/Memory.h"
#include "platform/Paths.h"
#include "support/TemporaryFolder.h"

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
    void Set(const std::string& value) { value.empty() ? unsetenv(m_name) : setenv(m_name, value.c_str(), 1); }

    const char* m_name;
    std::string m_before;
};

}  // namespace

TEST(System, ApplicationDataIsTheConfiguredFolderOrTheOneInTheHome)
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

TEST(System, AnAddressLeadsToItsModule)
{
    static const int kHere = 0;
    const auto program = platform::ExecutablePath();
    EXPECT_EQ(std::filesystem::path(program).filename(), "platform_test");
    EXPECT_EQ(platform::ModulePath(&kHere), program);
    const auto library = platform::ModulePath(reinterpret_cast<const void*>(&std::getenv));
    EXPECT_NE(library.find("/libc"), std::string::npos) << library;
    EXPECT_EQ(platform::ModulePath(nullptr), "");
}

TEST(System, MemoryFiguresFitTogether)
{
    const auto status = platform::GlobalMemoryStatus();
    ASSERT_TRUE(status);
    EXPECT_GT(status->availablePhysical, 0u);
    EXPECT_LE(status->availablePhysical, status->totalPhysical);
    EXPECT_LE(status->availablePageFile, status->totalPageFile);
    EXPECT_LT(status->availableVirtual, status->totalVirtual);
    EXPECT_LE(status->loadPercent, 100u);
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
