#include <sys/stat.h>

#include "unit/openhost_values/FilesHost.h"

namespace {

using Files = CFilesHost;

TEST_F(Files, APipeIsNotOpenedAndBlocksNobody)
{
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ASFile file = nullptr;
    EXPECT_EQ(Open(pipe, kRead, &file), fileErrOpenFailed);
    EXPECT_EQ(file, nullptr);
}

TEST_F(Files, ANameThatIsNoTextFindsItsFile)
{
    const std::string path = folder.Write("n\xFF.pdf", "12345");
    const ASFile file = Opened(path, kRead);
    EXPECT_EQ(SUPPORT(ASFileGetEOF)(file), 5);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
    const ASPathName whole = Path(folder.Path());
    const ASPathName made =
        SUPPORT(ASFileSysCreatePathName)(nullptr, CORE(ASAtomFromString)("FolderPathName"), whole, "n\xFF.pdf");
    EXPECT_EQ(openhost::PathAt(made).Native(), path);
    for (const ASPathName name : {whole, made}) SUPPORT(ASFileSysReleasePath)(nullptr, name);
}

TEST_F(Files, AFullDiskRaisesItsOwnError)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
    const ASFile file = Opened("/dev/full", kWrite);
    EXPECT_RAISES(fileErrDiskFull, SUPPORT(ASFileWrite)(file, "x", 1));
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
}

}  // namespace
