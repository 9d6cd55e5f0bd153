#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "base/Names.h"
#include "engine/InputCollector.h"
#include "support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> AllPaths(const CInputCollector& collector)
{
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < collector.Paths().Size(); ++i) paths.push_back(collector.Paths().Path(i));
    return paths;
}

/// What is collected from a folder, relative to it.
std::vector<std::string> Collect(const CTemporaryFolder& folder, CollectorOptions options)
{
    CInputCollector collector(std::move(options));
    collector.AddPath(folder.Path());
    std::vector<std::string> names;
    for (const std::string& path : AllPaths(collector)) {
        names.push_back(path.substr(folder.Path().size() + 1));
        std::replace(names.back().begin(), names.back().end(), kSeparator, '/');
    }
    return names;
}

void MakeTree(const CTemporaryFolder& folder)
{
    folder.MakeFolder("sub/deep");
    folder.MakeFolder("Alpha.pdf");  // a folder that looks like a file
    folder.MakeFolder(".hidden");
    for (const char* name : {"b.pdf", "A.PDF", "c.tif", "noextension", ".dot.pdf", "pdf", "x.pdf.txt", "y.tar.gz",
                             "sub/d.pdf", "sub/e.TIF", "sub/deep/f.Pdf", ".hidden/g.pdf", "Alpha.pdf/h.pdf"})
        folder.Write(name, "x");
}

TEST(InputCollector, ListsEachExtensionFromTheTopFolderDown)
{
    const CTemporaryFolder folder;
    MakeTree(folder);
    using Names = std::vector<std::string>;
    const struct {
        const char* what;
        CollectorOptions options;
        Names names;
    } rows[] = {
        {"one extension", {{"pdf"}, true}, {"A.PDF", "b.pdf", "Alpha.pdf/h.pdf", "sub/d.pdf", "sub/deep/f.Pdf"}},
        {"top folder only", {{"pdf"}, false}, {"A.PDF", "b.pdf"}},
        {"second extension starts over",
         {{"tif", "pdf"}, true},
         {"c.tif", "sub/e.TIF", "A.PDF", "b.pdf", "Alpha.pdf/h.pdf", "sub/d.pdf", "sub/deep/f.Pdf"}},
        {"same extension twice", {{"pdf", "PDF"}, false}, {"A.PDF", "b.pdf"}},
        {"two-part extension", {{"tar.gz"}, true}, {"y.tar.gz"}},
        {"every file", {{"*"}, false}, {"A.PDF", "b.pdf", "c.tif", "noextension", "pdf", "x.pdf.txt", "y.tar.gz"}},
        {"no extension accepted", {{}, true}, {}},
    };
    for (const auto& row : rows) EXPECT_EQ(Collect(folder, row.options), row.names) << row.what;
}

TEST(InputCollector, TakesASinglePathAsItStandsAndEachFileOnce)
{
    const CTemporaryFolder folder;
    CInputCollector collector({{"pdf"}, true});
    const std::string text = folder.Write("a.txt", "x");
    collector.AddPath(text);
    collector.AddPath(folder / "missing.xyz");
    collector.AddPath(text);
    const std::string document = folder.Write("a.pdf", "x");
    collector.AddPath(folder.Path() + kSeparator);
    collector.AddPath(folder.Path());
    EXPECT_EQ(AllPaths(collector), (std::vector{text, folder / "missing.xyz", document}));
}

TEST(InputCollector, LinksNeitherLoopNorMultiply)
{
    if (!kHasLinks) GTEST_SKIP() << "no symbolic links here";
    const CTemporaryFolder folder;
    folder.MakeFolder("a/b");
    folder.Write("a/b/f.pdf", "x");
    fs::create_directory_symlink(folder.Path(), folder / "a/b/top");
    fs::create_directory_symlink(folder / "a", folder / "a/self");
    fs::create_symlink("nowhere.pdf", folder / "a/dangling.pdf");
    const std::string noText = std::string("bad\xFF\xFE name ") + "\xC3.pdf";
    folder.Write(noText, "x");
    EXPECT_EQ(Collect(folder, {{"pdf"}, true}), (std::vector<std::string>{noText, "a/dangling.pdf", "a/b/f.pdf"}));

    // Each level links twice to the next: 2^24 ways through 24 folders.
    const CTemporaryFolder ladder;
    for (int level = 0; level < 24; ++level) ladder.MakeFolder("level" + std::to_string(level));
    for (int level = 0; level + 1 < 24; ++level)
        for (const char* side : {"left", "right"})
            fs::create_directory_symlink(ladder / ("level" + std::to_string(level + 1)),
                                         ladder / ("level" + std::to_string(level) + "/" + side));
    ladder.Write("level23/only.pdf", "x");
    EXPECT_EQ(Collect(ladder, {{"pdf"}, true}).size(), 1u);
}

TEST(InputCollector, ManyFilesAreEachListedOnce)
{
    const CTemporaryFolder folder;
    constexpr int kFiles = 5'000;
    for (int i = 0; i < kFiles; ++i) folder.Write(std::to_string(i) + ".pdf", "");
    CInputCollector collector({{"pdf", "Pdf", "*"}, true});
    collector.AddPath(folder.Path());
    collector.AddPath(folder.Path());
    std::vector<std::string> paths = AllPaths(collector);
    EXPECT_EQ(paths.size(), static_cast<std::size_t>(kFiles));
    std::sort(paths.begin(), paths.end());
    EXPECT_EQ(std::adjacent_find(paths.begin(), paths.end()), paths.end());
}

}  // namespace
