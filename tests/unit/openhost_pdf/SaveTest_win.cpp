#include <gtest/gtest.h>

#include "TestPdfs.h"
#include "openhost/pdf/Conversions.h"
#include "platform/Files.h"
#include "platform/Handle_win.h"
#include "platform/WideText_win.h"

using namespace openhost;

namespace {

/// As a program does that lets nobody else in.
platform::CHandle Held(const std::string& path, DWORD share)
{
    return platform::CHandle(CreateFileW(platform::WidePath(path).c_str(), GENERIC_READ, share, nullptr,
                                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace

using Save = CPdfTest;

TEST_F(Save, AFileThatAnotherProgramHoldsStaysAndSoDoesTheDocument)
{
    for (const std::size_t fill : {std::size_t{10}, std::size_t{17} << 20}) {  // read at once, and in pieces
        const std::string path =
            folder.Write("a.pdf", SamplePdf(2, "", StreamObject(100, "", std::string(fill, 'x'))));
        const std::string before = FileBytes(path);
        CPdfDocument document = TitledDocument(path, "new");
        {
            const auto held = Held(path, FILE_SHARE_READ);
            ASSERT_TRUE(held.Valid());
            EXPECT_TRUE(ProblemOf([&] { document.Save({}); }).has_value());
            EXPECT_EQ(document.PageCount(), 2);
            EXPECT_TRUE(document.IsModified());
        }
        EXPECT_EQ(FileBytes(path), before);
        EXPECT_EQ(folder.EntryCount(), 1u) << "the temporary file is gone";
        document.Save({});
        EXPECT_EQ(TitleOf(path), "new");
        std::filesystem::remove(path);
    }
}

TEST_F(Save, LongPathsAndUnusualNamesAreOpenedSavedAndReadForText)
{
    std::string deep = folder.Path();
    for (int level = 0; level < 4; ++level) deep += "\\" + std::string(100, static_cast<char>('a' + level));
    ASSERT_TRUE(platform::CreateFolders(deep));
    const std::string source = folder.Write("a.pdf", SamplePdf(2));
    const std::string names[] = {"a.pdf", "dots...", "blank ", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80.pdf"};
    for (const std::string& name : names) {
        const std::string path = deep + "\\" + name;
        TitledDocument(source, name).Save({.path = path});
        EXPECT_EQ(TitleOf(path), name);
        CPdfDocument document = TitledDocument(path, "in place");
        document.Save({});
        EXPECT_EQ(TitleOf(path), "in place") << name;
        PdfToText(document, {.path = path + ".txt"});
        EXPECT_TRUE(platform::FileSize(path + ".txt").value_or(0) > 0) << name;
        document.SetInfo("Title", "again");
        document.Save({});  // the text reader let go of it
        for (const std::string& made : {path, path + ".txt"}) EXPECT_TRUE(platform::DeleteFile(made)) << made;
    }
    for (std::string path = deep; path.size() > folder.Path().size(); path.resize(path.rfind('\\')))
        EXPECT_TRUE(RemoveDirectoryW(platform::WidePath(path).c_str())) << path;
}

TEST_F(Save, DevicesAndStreamsOfOtherFilesAreNoTargets)
{
    const std::string a = folder.Write("a.pdf", SamplePdf(1));
    CPdfDocument document = TitledDocument(a, "x");
    for (const char* name : {"NUL", "con.pdf", "LPT1", "a.pdf:stream"})
        EXPECT_TRUE(ProblemOf([&] { document.Save({.path = folder / name}); }).has_value()) << name;
    EXPECT_EQ(folder.EntryCount(), 1u);
    EXPECT_EQ(ProblemOf([&] { CPdfDocument::Open("NUL"); }).has_value(), true);
}
