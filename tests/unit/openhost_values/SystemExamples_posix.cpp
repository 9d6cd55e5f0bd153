#include <filesystem>

#include "unit/openhost_values/SystemExamples.h"

using From = MadePath::From;

const char* const kBasePath = "/base/folder/file.pdf";
const char* const kLineEnd = "\n";

std::vector<MadePath> MadePaths(const std::string& here, const std::string& realFolder)
{
    return {{"Cstring", "/a/b.pdf", From::Nothing, "/a/b.pdf"},
            {"Cstring", "//a/.//b/", From::Nothing, "/a/b"},
            {"Cstring", "/", From::Nothing, "/"},
            {"Cstring", "/a/../b", From::Nothing, "/a/../b"},
            {"Cstring", "x/y.pdf", From::Nothing, here + "/x/y.pdf"},
            {"Cstring", "./y.pdf", From::Nothing, here + "/y.pdf"},
            {"Cstring", "caf\xE9.pdf", From::Nothing, here + "/caf\xE9.pdf"},
            {"DIPath", "/a/b.pdf", From::Base, "/a/b.pdf"},
            {"DIPath", "b.pdf", From::Nothing, here + "/b.pdf"},
            {"DIPath", "b.pdf", From::Base, "/base/folder/b.pdf"},
            {"DIPath", "../x/./b.pdf", From::Base, "/base/x/b.pdf"},
            {"DIPath", "../../../../b.pdf", From::Base, "/b.pdf"},
            {"DIPath", "b.pdf", From::RealFolder, realFolder + "/b.pdf"}};
}

std::vector<DeviceIndependentPath> DeviceIndependentPaths()
{
    return {{"/a/b/c.pdf", nullptr, "/a/b/c.pdf"},
            {"/a/b/c.pdf", "/a/b/x.pdf", "c.pdf"},
            {"/a/b/c.pdf", "/a/x/y/z.pdf", "../../b/c.pdf"},
            {"/a/b/c.pdf", "/x/y.pdf", "/a/b/c.pdf"},
            {"/a/b", "/a/b/x.pdf", "/a/b"}};
}

std::vector<NamedPath> NamedPaths()
{
    return {{"/some folder/caf\xC3\xA9 100%.pdf", "caf\xC3\xA9 100%.pdf", "/some folder", "/",
             "file:///some%20folder/caf%C3%A9%20100%25.pdf"}};
}

std::vector<const char*> ImpossibleNames() { return {"x/y", "..", ".", ""}; }

std::string AnotherNameFor(const std::string& path)
{
    std::filesystem::create_symlink(path, path + ".link");
    return path + ".link";
}
