#include <gtest/gtest.h>

#include <filesystem>

#include "platform/Paths.h"
#include "platform/Windows_win.h"

TEST(SystemWindows, VariablesAreText)
{
    SetEnvironmentVariableW(L"FERRULE_TEST", L"\u00E4\U0001F600");
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
