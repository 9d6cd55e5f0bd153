#include "unit/openhost_values/FilesHost.h"
#include "unit/openhost_values/SystemExamples.h"

namespace {

using Files = CFilesHost;

TEST_F(Files, OpeningAnswersAnErrorCode)
{
    folder.Write("there.pdf", "x");
    const struct {
        std::string path;
        ASFileMode mode;
        ASErrorCode code;
    } rows[] = {
        {folder / "missing.pdf", kRead, fileErrFNF},       {folder / "missing.pdf", kWrite, fileErrFNF},
        {folder / "no folder/x.pdf", kCreate, fileErrFNF}, {folder.Path(), kRead, fileErrOpenFailed},
        {folder.Path(), kCreate, fileErrOpenFailed},       {folder / std::string(300, 'n'), kCreate, fileErrFNF},
        {folder / "there.pdf", 0, genErrBadParm}};
    for (const auto& row : rows) {
        ASFile file = nullptr;
        EXPECT_EQ(Open(row.path, row.mode, &file), row.code) << row.path << ' ' << row.mode;
        EXPECT_EQ(file, nullptr);
    }
    ASFile file = nullptr;
    ASFileSysRec foreign{};
    EXPECT_EQ(SUPPORT(ASFileSysOpenFile)(nullptr, nullptr, kRead, &file), genErrBadParm);
    EXPECT_EQ(SUPPORT(ASFileSysOpenFile)(&foreign, nullptr, kRead, &file), genErrBadParm);
    EXPECT_EQ(SUPPORT(ASFileClose)(nullptr), genErrBadParm);
}

TEST_F(Files, AnOpenFileGivesTheSameHandleUnderEveryName)
{
    const std::string path = folder.Write("a.pdf", "12345");
    const std::string other = AnotherNameFor(path);
    const ASFile file = Opened(path, kRead);
    EXPECT_RAISES(fileErrPerm, SUPPORT(ASFileWrite)(file, "x", 1));
    EXPECT_EQ(Opened(other, kRead | kWrite), file);
    EXPECT_EQ(SUPPORT(ASFileGetOpenMode)(file) & 3, 3);
    EXPECT_EQ(SUPPORT(ASFileWrite)(file, "x", 1), 1);  // it has the wider rights now
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
    char rest[8] = {};
    EXPECT_EQ(SUPPORT(ASFileRead)(file, rest, 8), 4);
    EXPECT_STREQ(rest, "2345");
    const OwnPath link = Path(other);
    EXPECT_TRUE(SUPPORT(ASFileIsSame)(file, link, nullptr));
    const ASPathName acquired = SUPPORT(ASFileAcquirePathName)(file);
    EXPECT_EQ(openhost::PathAt(acquired).Native(), path);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), genErrBadParm);
    EXPECT_REFUSED(SUPPORT(ASFileGetEOF)(file));
    SUPPORT(ASFileSysReleasePath)(nullptr, acquired);  // the reference outlives the file
}

TEST_F(Files, CreatingForWritingStartsEmptyAndOtherModesKeepTheContent)
{
    const struct {
        ASFileMode mode;
        const char* after;
    } rows[] = {{kWrite, "New45"}, {kRead | kCreate, "New45"}, {kCreate, "New"}};
    for (const auto& row : rows) {
        const std::string path = folder.Write("a.txt", "12345");
        const ASFile file = Opened(path, row.mode);
        EXPECT_EQ(SUPPORT(ASFileWrite)(file, "New", 3), 3);
        EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
        EXPECT_EQ(FileBytes(path), row.after) << row.mode;
    }
}

TEST_F(Files, PositionsAndLengthsBeyondTwoGibibytesNeedTheWideCalls)
{
    constexpr ASFilePos64 kFar = 5'000'000'000;
    const ASFile file = Opened(folder / "sparse", kRead | kCreate);
    SUPPORT(ASFileSetPos64)(file, kFar);
    EXPECT_EQ(SUPPORT(ASFileWrite)(file, "end", 3), 3);
    EXPECT_EQ(SUPPORT(ASFileGetEOF64)(file), kFar + 3);
    EXPECT_EQ(SUPPORT(ASFileGetPos64)(file), kFar + 3);
    EXPECT_RAISES(fileErrTooBig, SUPPORT(ASFileGetEOF)(file));
    EXPECT_RAISES(fileErrTooBig, SUPPORT(ASFileGetPos)(file));
    EXPECT_REFUSED(SUPPORT(ASFileSetPos)(file, -1));
    EXPECT_REFUSED(SUPPORT(ASFileSetEOF64)(file, ~0ull));
    EXPECT_REFUSED(SUPPORT(ASFileRead)(file, nullptr, 1));
    SUPPORT(ASFileSetEOF)(file, 2);
    EXPECT_EQ(SUPPORT(ASFileGetEOF)(file), 2);
    EXPECT_EQ(SUPPORT(ASFileHardFlush)(file), 0);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
}

TEST_F(Files, FoldersAreMadeWalkedThroughAndRemoved)
{
    const ASPathName deep = Path(folder / "new/deep");
    const ASPathName top = Path(folder / "new");
    EXPECT_EQ(SUPPORT(ASFileSysCreateFolder)(nullptr, deep, 0), fileErrFNF);
    EXPECT_EQ(SUPPORT(ASFileSysCreateFolder)(nullptr, deep, 1), 0);
    EXPECT_EQ(SUPPORT(ASFileSysCreateFolder)(nullptr, deep, 1), fileErrExists);
    EXPECT_EQ(SUPPORT(ASFileSysRemoveFolder)(nullptr, top), fileErrBusy);
    folder.Write("new/b.pdf", "12345");
    folder.Write("new/.hidden", "");
    ASFileSysItemPropsRec props{};
    props.size = sizeof props;
    ASPathName item = nullptr;
    std::string seen;
    const ASFolderIterator walk = SUPPORT(ASFileSysFirstFolderItem)(nullptr, top, &props, &item);
    ASSERT_NE(walk, nullptr);
    do {
        seen += openhost::PathAt(item).Name() + (props.type == kASFileSysFolder ? "/ " : " ");
        if (props.isHidden) seen += "(hidden) ";
        if (props.fileSize > 0) seen += std::to_string(props.fileSize) + " bytes ";
        SUPPORT(ASFileSysReleasePath)(nullptr, item);
    } while (SUPPORT(ASFileSysNextFolderItem)(nullptr, walk, &props, &item));
    SUPPORT(ASFileSysDestroyFolderIterator)(nullptr, walk);
    EXPECT_EQ(seen, ".hidden (hidden) b.pdf 5 bytes deep/ ");
    EXPECT_EQ(SUPPORT(ASFileSysFirstFolderItem)(nullptr, deep, &props, &item), nullptr);
    const ASPathName file = Path(folder / "new/b.pdf");
    EXPECT_EQ(SUPPORT(ASFileSysRemoveFile)(nullptr, deep), fileErrOpenFailed);
    EXPECT_EQ(SUPPORT(ASFileSysRemoveFolder)(nullptr, file), fileErrNotADir);
    EXPECT_EQ(SUPPORT(ASFileSysRemoveFile)(nullptr, file), 0);
    EXPECT_EQ(SUPPORT(ASFileSysRemoveFile)(nullptr, file), fileErrFNF);
    EXPECT_EQ(SUPPORT(ASFileSysGetItemProps)(nullptr, file, &props), 0);
    EXPECT_FALSE(props.isThere);
    EXPECT_RAISES(fileErrFNF, SUPPORT(ASFileSysFirstFolderItem)(nullptr, file, &props, &item));
    for (const ASPathName path : {deep, top, file}) SUPPORT(ASFileSysReleasePath)(nullptr, path);
}

TEST_F(Files, PropertiesNeverGoPastTheCallersRecord)
{
    ASFileSysItemPropsRec props{};
    props.size = offsetof(ASFileSysItemPropsRec, isHidden);
    props.fileSize = 77;
    const OwnPath path = Path(folder.Write("a.pdf", "12345"));
    EXPECT_EQ(SUPPORT(ASFileSysGetItemProps)(nullptr, path, &props), 0);
    EXPECT_TRUE(props.isThere);
    EXPECT_EQ(props.fileSize, 77u);
    EXPECT_EQ(props.size, offsetof(ASFileSysItemPropsRec, isHidden));
}

}  // namespace
