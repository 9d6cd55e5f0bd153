#include <gtest/gtest.h>

#include <filesystem>

#include "platform/Paths.h"
#include "platform/Windows_win.h"
#include "support/TemporaryFolder.h"

namespace {

/// Sets a variable for one test.
class CVariable {
public:
    CVariable(const char* name, const wchar_t* value) : m_name(name), m_before(platform::EnvironmentText(name))
    {
        SetEnvironmentVariableW(std::filesystem::path(name).c_str(), value);
    }
    ~CVariable() { SetEnvironmentVariableA(m_name, m_before.c_str()); }

private:
    const char* m_name;
    std::string m_before;
};

}  // namespace

TEST(SystemWindows, ApplicationDataIsTheConfiguredFolderOrTheUsersOwn)
{
    const CTemporaryFolder folder;
    const std::string root = folder.Path();
    folder.Write("file", "");
    const struct {
        std::string configured, expected;
    } rows[] = {{root + "\\x\\\xC3\xA4", root + "\\x\\\xC3\xA4"},
                {root + "\\z\\\\", root + "\\z"},
                {root + "\\file\\below", ""}};
    for (const auto& row : rows) {
        const CVariable configured("APPDATA", PathFromBytes(row.configured).c_str());
        EXPECT_EQ(platform::ApplicationDataFolder(), row.expected);
        EXPECT_TRUE(row.expected.empty() || std::filesystem::is_directory(PathFromBytes(row.expected)))
            << row.expected;
    }
    for (const wchar_t* value : {L"relative", L""}) {
        const CVariable configured("APPDATA", value);
        EXPECT_TRUE(std::filesystem::path(platform::ApplicationDataFolder()).is_absolute());
    }
}

TEST(SystemWindows, VariablesAreText)
{
    const CVariable variable("FERRULE_TEST", L"\u00E4\U0001F600");
    EXPECT_EQ(platform::EnvironmentText("FERRULE_TEST"), "\xC3\xA4\xF0\x9F\x98\x80");
    EXPECT_EQ(platform::EnvironmentText("FERRULE_TEST_ABSENT"), "");
}

TEST(SystemWindows, PathsBecomeAbsolute)
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

TEST(SystemWindows, AnAddressInALibraryLeadsToIt)
{
    const auto library =
        platform::ModulePath(reinterpret_cast<const void*>(GetProcAddress(GetModuleHandleA("kernel32"), "Sleep")));
    const auto name = library.substr(library.rfind('\\') + 1);
    EXPECT_TRUE(_stricmp(name.c_str(), "kernel32.dll") == 0 || _stricmp(name.c_str(), "kernelbase.dll") == 0)
        << library;
    EXPECT_TRUE(std::filesystem::exists(library));
}
