#include "openhost/pdf/FileSource.h"

#include <gtest/gtest.h>

#include <qpdf/FileInputSource.hh>
#include <qpdf/QPDFExc.hh>

#include "openhost/pdf/PdfError.h"
#include "support/TemporaryFolder.h"

using namespace openhost;

namespace {

/// What a reader that jumps about gets to see.
std::string Reading(InputSource& source)
{
    std::string seen;
    char bytes[8] = {};
    const auto note = [&](const std::string& text) {
        seen += text + "@" + std::to_string(source.tell()) + "/" + std::to_string(source.getLastOffset()) + " ";
    };
    source.rewind();
    note(source.readLine(100));
    note("eol " + std::to_string(source.findAndSkipNextEOL()));
    note(std::string(bytes, source.read(bytes, 3)));
    source.unreadCh(bytes[2]);
    note(std::string(bytes, source.read(bytes, 1)));
    source.seek(-4, SEEK_END);
    note(std::string(bytes, source.read(bytes, sizeof bytes)));
    note(std::to_string(source.read(bytes, sizeof bytes)));
    note("eol " + std::to_string(source.findAndSkipNextEOL()));
    source.seek(2, SEEK_SET);
    source.seek(1500, SEEK_CUR);
    note("eol " + std::to_string(source.findAndSkipNextEOL()));
    source.seek(100000, SEEK_SET);
    note(std::to_string(source.read(bytes, sizeof bytes)));
    source.rewind();
    note(source.readLine(100));
    return seen;
}

class FileSource : public testing::Test {
protected:
    CTemporaryFolder folder;
    const std::string content = "first\r\nsecond line\n\r\nthird" + std::string(5000, 'x') + "\rlast";
    std::string path = folder.Write("a.pdf", content);
    CFileSource source{path, OpenForReading(path)};
};

}  // namespace

TEST_F(FileSource, ReadsLikeTheLibrarysOwn)
{
    FileInputSource expected(path.c_str());
    EXPECT_EQ(Reading(source), Reading(expected));
    EXPECT_THROW(source.seek(-1, SEEK_SET), std::runtime_error);
}

TEST_F(FileSource, GoesOnAfterItWasLetGoOf)
{
    const std::string before = Reading(source);
    source.LetGo();
    EXPECT_EQ(Reading(source), before);
    source.LetGo();
    std::filesystem::rename(path, folder / "b.pdf");
    EXPECT_THROW(Reading(source), CPdfError);
    std::filesystem::rename(folder / "b.pdf", path);
    EXPECT_EQ(Reading(source), before);
}

TEST_F(FileSource, KeepsTheOldContentWhenSwallowedAndNothingWhenReplaced)
{
    const std::string before = Reading(source);
    source.seek(7, SEEK_SET);
    source.Swallow();
    EXPECT_EQ(source.tell(), 7);
    folder.Write("a.pdf", "another");
    EXPECT_EQ(Reading(source), before);
    CFileSource replaced(path, OpenForReading(path));
    replaced.LetGoForEver();
    EXPECT_THROW(Reading(replaced), QPDFExc);
}
