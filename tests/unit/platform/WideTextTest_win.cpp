#include <filesystem>

#include <gtest/gtest.h>

#include "platform/WideText_win.h"
#include "platform/Windows_win.h"
#include "support/TemporaryFolder.h"

namespace {

/// Works in another folder while it lives.
class CWorkingIn {
public:
    explicit CWorkingIn(const std::string& folder) : m_before(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~CWorkingIn() { std::filesystem::current_path(m_before); }

private:
    std::filesystem::path m_before;
};

std::wstring Extended(const std::string& path) { return L"\\\\?\\" + platform::WideText(path); }

}  // namespace

TEST(WideText, PathsBecomeAbsoluteAndKeepTheirNames)
{
    const struct {
        std::string path;
        std::wstring wide;
    } rows[] = {
        {"C:/a//b/./c/../d", L"\\\\?\\C:\\a\\b\\d"},
        {"c:\\a. .\\b .", L"\\\\?\\c:\\a. .\\b ."},
        {"C:\\...\\.x\\..y", L"\\\\?\\C:\\...\\.x\\..y"},
        {"C:\\..\\..\\x", L"\\\\?\\C:\\x"},
        {"C:\\", L"\\\\?\\C:\\"},
        {"C:\\a\\\\", L"\\\\?\\C:\\a\\"},
        {"C:\\a\\..\\", L"\\\\?\\C:\\"},
        {"\\\\server\\share\\x\\..\\..\\y", L"\\\\?\\UNC\\server\\share\\y"},
        {"//server/share/x", L"\\\\?\\UNC\\server\\share\\x"},
        {"\\\\?\\C:\\a/b\\..", L"\\\\?\\C:\\a/b\\.."},
        {"\\\\.\\pipe\\x", L"\\\\.\\pipe\\x"},
        {"C:\\\xC3\xA4\xF0\x9F\x98\x80", L"\\\\?\\C:\\\u00E4\U0001F600"},
        {"", L""},
        {std::string("C:\\a\0b", 6), L""},
        {"C:\\\xFF", L""},
        {"C:\\\xED\xA0\x80", L""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(platform::WidePath(row.path), row.wide) << row.path;
    }
}

TEST(WideText, RelativePathsBeginWhereTheProcessIs)
{
    const CTemporaryFolder folder;
    folder.MakeFolder("sub");
    const CWorkingIn inside(folder.Path());
    const auto drive = folder.Path().substr(0, 2);
    EXPECT_EQ(platform::WidePath("x/y"), Extended(folder.Path() + "\\x\\y"));
    EXPECT_EQ(platform::WidePath("sub\\..\\x "), Extended(folder.Path() + "\\x "));
    EXPECT_EQ(platform::WidePath("."), Extended(folder.Path()));
    EXPECT_EQ(platform::WidePath("/x"), Extended(drive + "\\x"));
    EXPECT_EQ(platform::WidePath(drive + "x"), Extended(folder.Path() + "\\x"));
}

TEST(WideText, TheUsualFormComesBack)
{
    EXPECT_EQ(platform::NarrowPath(L"\\\\?\\C:\\a. \\\U0001F600"), "C:\\a. \\\xF0\x9F\x98\x80");
    EXPECT_EQ(platform::NarrowPath(L"\\\\?\\UNC\\server\\share\\x"), "\\\\server\\share\\x");
    EXPECT_EQ(platform::NarrowPath(L"C:\\x"), "C:\\x");
}

TEST(WideText, NamesThatAreNoTextGoByTheirShortNames)
{
    EXPECT_EQ(platform::NarrowName(L"a\U0001F600", L"A~1"), "a\xF0\x9F\x98\x80");
    EXPECT_EQ(platform::NarrowName(L"a\xD83D", L"A~1"), "A~1");
    EXPECT_EQ(platform::NarrowName(L"a\xDE00z", L""), "a?z");
    EXPECT_EQ(platform::NarrowText(L"\xD83D\xD83D\xDE00"), "?\xF0\x9F\x98\x80");
}

TEST(WideText, DevicesHideBehindNames)
{
    for (const wchar_t* name : {L"NUL", L"nul.pdf", L"con", L"Aux .tar.gz", L"COM1", L"lpt9.x", L"COM\u00B2",
                                L"CONOUT$", L"prn:", L"NUL\\"}) {
        EXPECT_TRUE(platform::IsDeviceName(std::wstring(L"\\\\?\\C:\\x\\") + name)) << platform::NarrowText(name);
    }
    for (const wchar_t* name : {L"null", L"COM", L"COM0", L"COM10", L"xCON", L".nul", L"CON\\x"}) {
        EXPECT_FALSE(platform::IsDeviceName(std::wstring(L"\\\\?\\C:\\x\\") + name)) << platform::NarrowText(name);
    }
    EXPECT_TRUE(platform::IsDeviceName(L"\\\\.\\pipe\\x"));
    EXPECT_FALSE(platform::CheckTargetName(L"\\\\?\\C:\\x\\Title: Subtitle.pdf"));
    EXPECT_TRUE(platform::CheckTargetName(L"\\\\?\\C:\\x\\Title.pdf"));
}
