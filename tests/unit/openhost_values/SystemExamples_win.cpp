#include <cctype>

#include "unit/openhost_values/SystemExamples.h"

using From = MadePath::From;

const char* const kBasePath = "C:\\base\\folder\\file.pdf";
const char* const kLineEnd = "\r\n";

std::vector<MadePath> MadePaths(const std::string& here, const std::string& realFolder)
{
    const std::string drive = here.substr(0, 2);
    return {{"Cstring", "C:\\a\\b.pdf", From::Nothing, "C:\\a\\b.pdf"},
            {"Cstring", "c:/a/b.pdf", From::Nothing, "c:\\a\\b.pdf"},
            {"Cstring", "C:\\\\a\\.\\\\b\\", From::Nothing, "C:\\a\\b"},
            {"Cstring", "C:\\a\\..\\b", From::Nothing, "C:\\b"},
            {"Cstring", "C:\\..\\..\\b", From::Nothing, "C:\\b"},
            {"Cstring", "C:\\", From::Nothing, "C:\\"},
            {"Cstring", "C:\\a.\\b. ", From::Nothing, "C:\\a.\\b. "},
            {"Cstring", "\\\\server\\share\\a\\b.pdf", From::Nothing, "\\\\server\\share\\a\\b.pdf"},
            {"Cstring", "//server/share/", From::Nothing, "\\\\server\\share\\"},
            {"Cstring", "\\\\?\\C:\\a\\b.pdf", From::Nothing, "C:\\a\\b.pdf"},
            {"Cstring", "\\\\?\\UNC\\server\\share\\b.pdf", From::Nothing, "\\\\server\\share\\b.pdf"},
            {"Cstring", "\\\\.\\pipe\\x", From::Nothing, "\\\\.\\pipe\\x"},
            {"Cstring", "\\a\\b.pdf", From::Nothing, drive + "\\a\\b.pdf"},
            {"Cstring", "x/y.pdf", From::Nothing, here + "\\x\\y.pdf"},
            {"Cstring", "./y.pdf", From::Nothing, here + "\\y.pdf"},
            {"Cstring", "caf\xE9.pdf", From::Nothing, here + "\\caf\xE9.pdf"},  // no text: told, never found
            {"DIPath", "/C/a/b.pdf", From::Base, "C:\\a\\b.pdf"},
            {"DIPath", "/C", From::Base, "C:\\"},
            {"DIPath", "D:\\a\\b.pdf", From::Base, "D:\\a\\b.pdf"},
            {"DIPath", "/server/share/a/b.pdf", From::Base, "\\\\server\\share\\a\\b.pdf"},
            {"DIPath", "//a/b.pdf", From::Base, drive + "\\a\\b.pdf"},
            {"DIPath", "b.pdf", From::Nothing, here + "\\b.pdf"},
            {"DIPath", "b.pdf", From::Base, "C:\\base\\folder\\b.pdf"},
            {"DIPath", "../x/./b.pdf", From::Base, "C:\\base\\x\\b.pdf"},
            {"DIPath", "../../../../b.pdf", From::Base, "C:\\b.pdf"},
            {"DIPath", "b.pdf", From::RealFolder, realFolder + "\\b.pdf"}};
}

std::vector<DeviceIndependentPath> DeviceIndependentPaths()
{
    return {{"C:\\a\\b\\c.pdf", nullptr, "/C/a/b/c.pdf"},
            {"c:\\", nullptr, "/c"},
            {"C:\\a\\b\\c.pdf", "C:\\a\\b\\x.pdf", "c.pdf"},
            {"C:\\a\\b\\c.pdf", "C:\\a\\x\\y\\z.pdf", "../../b/c.pdf"},
            {"C:\\a\\b\\c.pdf", "C:\\x\\y.pdf", "../a/b/c.pdf"},
            {"C:\\a\\b\\c.pdf", "D:\\x\\y.pdf", "/C/a/b/c.pdf"},
            {"C:\\a\\b", "C:\\a\\b\\x.pdf", "/C/a/b"},
            {"\\\\server\\share\\a\\b.pdf", nullptr, "/server/share/a/b.pdf"},
            {"\\\\server\\share\\a\\b.pdf", "\\\\server\\share\\c.pdf", "a/b.pdf"}};
}

std::vector<NamedPath> NamedPaths()
{
    return {{"C:\\some folder\\caf\xC3\xA9 100%.pdf", "caf\xC3\xA9 100%.pdf", "C:\\some folder", "C:\\",
             "file:///C:/some%20folder/caf%C3%A9%20100%25.pdf"},
            {"\\\\server\\share\\f\\a.pdf", "a.pdf", "\\\\server\\share\\f", "\\\\server\\share\\",
             "file://server/share/f/a.pdf"}};
}

std::vector<const char*> ImpossibleNames() { return {"x/y", "x\\y", "x:y", "..", ".", ""}; }

std::string AnotherNameFor(const std::string& path)
{
    std::string other = path;
    for (char& letter : other) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    return other;
}
