#include "base/Names.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "platform/Files.h"
#include "support/TemporaryFolder.h"

TEST(PathNames, PathsComeApartAtTheLastSeparatorAndTheLastDotOfTheName)
{
    const struct {
        const char *path, *folder, *base, *extension;
    } rows[] = {{"/a/b.pdf", "/a/", "b", "pdf"},
                {"/a.d/b", "/a.d/", "b", ""},
                {"b.tar.gz", "", "b.tar", "gz"},
                {"/a/.hidden", "/a/", "", "hidden"},
                {"/a.b/", "/a.b/", "", ""},
                {"name.", "", "name", ""},
                {"", "", "", ""}};
    for (const auto& row : rows) {
        const auto parts = SplitPath(row.path);
        EXPECT_EQ(parts.folder, row.folder) << row.path;
        EXPECT_EQ(parts.base, row.base) << row.path;
        EXPECT_EQ(parts.extension, row.extension) << row.path;
        EXPECT_EQ(parts.folder + FileName(row.path), row.path);
        EXPECT_EQ(parts.folder + parts.base + (parts.hasDot ? "." : "") + parts.extension, row.path);
    }
    EXPECT_EQ(SplitPath("/a\\b.pdf").folder, kSeparator == '\\' ? "/a\\" : "/");
    EXPECT_EQ(WithTrailingSeparator("/a"), std::string("/a") + kSeparator);
    EXPECT_EQ(WithTrailingSeparator("/a/"), "/a/");
    EXPECT_EQ(WithTrailingSeparator(""), "");
}

TEST(PathNames, UniqueNamesTakeTheFirstFreeNumber)
{
    const struct {
        const char* path;
        std::set<std::string> taken;
        const char* expected;
    } rows[] = {
        {"/o/a.pdf", {}, "/o/a.pdf"},
        {"/o/a.pdf", {"/o/a (1).pdf"}, "/o/a.pdf"},
        {"/o/a.pdf", {"/o/a.pdf", "/o/a (1).pdf"}, "/o/a (2).pdf"},
        {"/o/a.pdf", {"/o/a.pdf", "/o/a (2).pdf"}, "/o/a (1).pdf"},
        {"/o.d/a", {"/o.d/a"}, "/o.d/a (1)"},
        {"/o/a.", {"/o/a."}, "/o/a (1)."},
    };
    for (const auto& row : rows) {
        const auto taken = [&](const std::string& path) { return row.taken.count(path) != 0; };
        EXPECT_EQ(UniqueSpaced(row.path, taken), row.expected) << row.path;
    }
}

TEST(PathNames, FoldersAndDanglingLinksTakeANameToo)
{
    const CTemporaryFolder folder;
    folder.MakeFolder("a.pdf");
    if (kHasLinks) std::filesystem::create_symlink("nowhere", folder / "a (1).pdf");
    EXPECT_EQ(UniqueSpaced(folder / "a.pdf", platform::NameExists), folder / (kHasLinks ? "a (2).pdf" : "a (1).pdf"));
    const auto tooLong = folder / std::string(300, 'n');
    EXPECT_EQ(UniqueSpaced(tooLong, platform::NameExists), tooLong)
        << "a name that no file can have must not count up for ever";
}
