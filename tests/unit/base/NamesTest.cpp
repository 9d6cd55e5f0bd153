#include <filesystem>
#include <set>

#include <gtest/gtest.h>

#include "base/Names.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"

TEST(Names, PathsComeApartAtTheLastSeparatorAndTheLastDotOfTheName)
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

TEST(Names, UniqueNamesTakeTheFirstFreeNumber)
{
    using Maker = std::string (*)(const std::string&, const NameTest&);
    const struct {
        Maker maker;
        const char* path;
        std::set<std::string> taken;
        const char* expected;
    } rows[] = {
        {UniqueSpaced, "/o/a.pdf", {}, "/o/a.pdf"},
        {UniqueSpaced, "/o/a.pdf", {"/o/a (1).pdf"}, "/o/a.pdf"},
        {UniqueSpaced, "/o/a.pdf", {"/o/a.pdf", "/o/a (1).pdf"}, "/o/a (2).pdf"},
        {UniqueSpaced, "/o/a.pdf", {"/o/a.pdf", "/o/a (2).pdf"}, "/o/a (1).pdf"},
        {UniqueSpaced, "/o.d/a", {"/o.d/a"}, "/o.d/a (1)"},
        {UniqueSpaced, "/o/a.", {"/o/a."}, "/o/a (1)."},
        {UniqueUnderscore, "/o/a.b.txt", {"/o/a.b.txt"}, "/o/a.b_1.txt"},
        {UniqueNoExtension, "/o/a.b", {"/o/a.b"}, "/o/a.b_1"},
        {UniqueSuffix, "a.b", {"a.b", "a.b (1)"}, "a.b (2)"},
    };
    for (const auto& row : rows) {
        const auto taken = [&](const std::string& path) { return row.taken.count(path) != 0; };
        EXPECT_EQ(row.maker(row.path, taken), row.expected) << row.path;
    }
}

TEST(Names, FoldersAndDanglingLinksTakeANameToo)
{
    const CTemporaryFolder folder;
    folder.MakeFolder("a.pdf");
    if (kHasLinks) std::filesystem::create_symlink("nowhere", folder / "a (1).pdf");
    EXPECT_EQ(UniqueSpaced(folder / "a.pdf", platform::NameExists), folder / (kHasLinks ? "a (2).pdf" : "a (1).pdf"));
    const auto tooLong = folder / std::string(300, 'n');
    EXPECT_EQ(UniqueSpaced(tooLong, platform::NameExists), tooLong)
        << "a name that no file can have must not count up for ever";
}

TEST(Names, ExtendedLengthPathsGetTheirPrefixOnce)
{
    const char* rows[][2] = {{"C:\\out\\x.pdf", "\\\\?\\C:\\out\\x.pdf"},
                             {"\\\\server\\share\\x.pdf", "\\\\?\\UNC\\server\\share\\x.pdf"},
                             {"\\\\?\\C:\\x.pdf", "\\\\?\\C:\\x.pdf"},
                             {"\\x", "\\\\?\\\\x"},
                             {"", "\\\\?\\"}};
    for (const auto& [path, expected] : rows) EXPECT_EQ(ExtendedLengthPath(path), expected);
}

TEST(Names, ACompletePathStartsAtADriveAndEndsInPdf)
{
    const struct {
        const char* path;
        bool complete;
    } rows[] = {{"C:\\a.pdf", true},     {"C:\\a b\\c\\d.pdf", true},
                {"C:\\a/b.pdf", true},   {"c:\\a.pdf", false},
                {"C:a.pdf", false},      {"C:\\.pdf", false},
                {"C:\\\\.pdf", true},    {"C:\\a.PDF", false},
                {"C:\\a.pdf ", false},   {"C:\\a:b.pdf", false},
                {"C:\\a?.pdf", false},   {"C:\\a\"b.pdf", false},
                {"\\\\s\\a.pdf", false}, {"", false},
                {"C:\\a|\\b.pdf", false}};
    for (const auto& row : rows) EXPECT_EQ(IsCompletePdfPath(row.path), row.complete) << row.path;
}

TEST(Names, TheWritabilityTestLeavesNothingBehindAndTouchesNothing)
{
    const CTemporaryFolder folder;
    EXPECT_TRUE(platform::IsFolderWritable(folder.Path()));
    EXPECT_EQ(folder.EntryCount(), 0u);
    const auto mine = folder.Write("__testfile.txt", "mine");
    EXPECT_TRUE(platform::IsFolderWritable(folder.Path() + "/"));
    EXPECT_EQ(FileBytes(mine), "mine");
    EXPECT_EQ(folder.EntryCount(), 1u);
    EXPECT_FALSE(platform::IsFolderWritable(folder / "missing"));
    EXPECT_FALSE(platform::IsFolderWritable(mine));
}
