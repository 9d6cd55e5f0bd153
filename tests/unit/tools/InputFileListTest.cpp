#include <filesystem>
#include <functional>

#include <gtest/gtest.h>

#include "support/TemporaryFolder.h"
#include "tools/InputFileList.h"

namespace {

namespace fs = std::filesystem;

TEST(InputFileList, LinesAreAddedAndTakenAwayAsAListShowsThem)
{
    const CTemporaryFolder folder;
    folder.Write("a.pdf", "x");
    folder.MakeFolder("sub");
    folder.Write("sub/b.PDF", "x");
    folder.Write("sub/c.txt", "x");
    CInputFileList list;
    EXPECT_TRUE(list.AddFile("/x/1.pdf"));
    EXPECT_TRUE(list.AddFile("/x/2.pdf"));
    EXPECT_FALSE(list.AddFile("/x/1.pdf"));
    EXPECT_EQ(list.AddFolder(folder.Path()), 2u);
    EXPECT_EQ(list.CountLabel(), "3 items(s) have been selected for processing.");
    EXPECT_EQ(list.Line(2), "FOLDER: <" + folder.Path() + "> (2 files)");
    list.Remove({0, 2, 7});
    ASSERT_EQ(list.Size(), 1u);
    EXPECT_EQ(list.Line(0), "/x/2.pdf");
    EXPECT_TRUE(list.AddFile("/x/1.pdf"));
    list.Clear();
    EXPECT_EQ(list.CountLabel(), "0 items(s) have been selected for processing.");
    EXPECT_TRUE(list.AddFile("/x/2.pdf"));
}

TEST(InputFileList, FilesAreThoseOfTheMomentEachOnce)
{
    using Step = std::function<void(const CTemporaryFolder&, CInputFileList&)>;
    const auto addFile = [](const char* name) {
        return Step([name](const auto& folder, auto& list) { list.AddFile(folder / name); });
    };
    const auto addFolder = [](const char* name) {
        return Step([name](const auto& folder, auto& list) { list.AddFolder(folder / name); });
    };
    const Step grow = [](const auto& folder, auto&) { folder.Write("in/new.pdf", "x"); };
    const Step vanish = [](const auto& folder, auto&) { fs::remove_all(folder / "in"); };
    const Step loop = [](const auto& folder, auto&) {
        fs::create_directory_symlink(folder.Path(), folder / "in/round");
        fs::create_directory_symlink(folder / "in", folder / "other");
    };
    const Step link = [](const auto& folder, auto&) { fs::create_symlink("b.pdf", folder / "in/a.pdf"); };
    const Step secondName = [](const auto& folder, auto&) {
        fs::create_hard_link(folder / "in/b.pdf", folder / "in/c.pdf");
    };
    const struct {
        const char* what;
        std::vector<Step> steps;
        std::vector<std::string> files;
        bool wantsLinks = false;  // or names that not every system has
    } rows[] = {
        {"list order",
         {addFile("z.pdf"), addFolder("in"), addFile("gone.pdf")},
         {"z.pdf", "in/b.pdf", "in/sub/d.pdf", "gone.pdf"}},
        {"by name and by folder",
         {addFile("in/sub/d.pdf"), addFolder("in"), addFolder("in/sub")},
         {"in/sub/d.pdf", "in/b.pdf"}},
        {"grown since", {addFolder("in"), grow}, {"in/b.pdf", "in/new.pdf", "in/sub/d.pdf"}},
        {"gone since", {addFolder("in"), addFile("z.pdf"), vanish}, {"z.pdf"}},
        {"a path with >", {addFolder("x > y")}, {"x > y/e.pdf"}, true},
        {"a file that reads like a folder",
         {addFile("FOLDER: <in> (1 files).pdf")},
         {"FOLDER: <in> (1 files).pdf"},
         true},
        {"links that loop",
         {loop, addFolder("other"), addFolder("in")},
         {"other/b.pdf", "other/round/x > y/e.pdf", "other/sub/d.pdf"},
         true},
        {"the file rather than its link", {link, addFolder("in")}, {"in/b.pdf", "in/sub/d.pdf"}, true},
        {"the first of two names", {secondName, addFile("in/c.pdf"), addFolder("in")}, {"in/c.pdf", "in/sub/d.pdf"}},
    };
    for (const auto& row : rows) {
        if (row.wantsLinks && !kHasLinks) continue;
        const CTemporaryFolder folder;
        folder.MakeFolder("in/sub");
        if (kHasLinks) folder.MakeFolder("x > y");
        for (const char* name : {"in/b.pdf", "in/sub/d.pdf"}) folder.Write(name, "x");
        if (kHasLinks) folder.Write("x > y/e.pdf", "x");
        CInputFileList list;
        for (const Step& step : row.steps) step(folder, list);
        std::vector<std::string> wanted;
        for (const std::string& file : row.files) wanted.push_back(folder / file);
        EXPECT_EQ(list.Files(), wanted) << row.what;
    }
}

}  // namespace
