// Files as plug-ins open, walk through and remove them, and streams over files, memory and procedures.
#ifndef _WIN32
#include <sys/stat.h>
#endif

#include <algorithm>
#include <cctype>
#include <cstring>

#include "unit/openhost_values/ValuesHost.h"

namespace {

using Files = CFilesHost;
using Streams = CFilesHost;

/// Another name that leads to the same file.
std::string AnotherNameFor(std::string path)
{
    if (kHasLinks) {
        std::filesystem::create_symlink(path, path + ".link");
        return path + ".link";
    }
    for (char& letter : path) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    return path;
}

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
    EXPECT_REFUSED(SUPPORT(ASFileSetEOF64)(file, ~0ull));
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
    props.size = offsetof(ASFileSysItemPropsRec, fileSize);
    props.fileSize = 77;
    EXPECT_EQ(SUPPORT(ASFileSysGetItemProps)(nullptr, top, &props), 0);
    EXPECT_EQ(props.fileSize, 77u) << "behind the end of the caller's record";
    props.size = sizeof props;
    EXPECT_RAISES(fileErrFNF, SUPPORT(ASFileSysFirstFolderItem)(nullptr, file, &props, &item));
    for (const ASPathName path : {deep, top, file}) SUPPORT(ASFileSysReleasePath)(nullptr, path);
}

#ifndef _WIN32
TEST_F(Files, APipeBlocksNobodyAndANameThatIsNoTextFindsItsFile)
{
    const std::string pipe = folder / "pipe", path = folder.Write("n\xFF.pdf", "12345");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ASFile file = nullptr;
    EXPECT_EQ(Open(pipe, kRead, &file), fileErrOpenFailed);
    EXPECT_EQ(file, nullptr);
    file = Opened(path, kRead);
    EXPECT_EQ(SUPPORT(ASFileGetEOF)(file), 5);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
}
#endif

TEST_F(Streams, BytesSurviveWritingAndReadingThroughEveryBufferSize)
{
    std::string text;
    for (int line = 0; line < 5000; ++line) text += std::to_string(line) + "\n";
    for (const ASSmallBufferSize bufferSize : std::initializer_list<ASSmallBufferSize>{0, 1, 7, 4096, 65535}) {
        SCOPED_TRACE(bufferSize);
        const ASFile out = Opened(folder / "a.txt", kCreate);
        const ASStm writing = SUPPORT(ASFileStmWrOpen)(out, bufferSize);
        for (std::size_t at = 0, part = 1; at < text.size(); at += part, part = part * 2 + 1) {
            part = std::min(part, text.size() - at);
            EXPECT_EQ(SUPPORT(ASStmWrite)(text.data() + at, 1, static_cast<ASTCount>(part), writing),
                      static_cast<ASTCount>(part));
        }
        SUPPORT(ASStmClose)(writing);
        EXPECT_EQ(SUPPORT(ASFileClose)(out), 0);
        EXPECT_EQ(FileBytes(folder / "a.txt"), text);

        const ASFile in = Opened(folder / "a.txt", kRead);
        SUPPORT(ASFileSetPos)(in, 2);
        const ASStm reading = SUPPORT(ASFileStmRdOpen)(in, bufferSize);
        std::string back(text.size() + 10, '#');
        EXPECT_EQ(SUPPORT(ASStmRead)(back.data(), 10, 3, reading), 3);
        EXPECT_EQ(back.substr(0, 30), text.substr(2, 30));
        const auto rest = static_cast<ASTCount>(text.size() - 32);
        EXPECT_EQ(SUPPORT(ASStmRead)(back.data(), 1, rest + 10, reading), rest);
        EXPECT_EQ(back.substr(0, text.size() - 32), text.substr(32));
        EXPECT_EQ(SUPPORT(ASStmRead)(back.data(), 1, 1, reading), 0);
        SUPPORT(ASStmClose)(reading);
        EXPECT_EQ(SUPPORT(ASFileClose)(in), 0);
    }
}

TEST_F(Streams, TheFilesPositionFollowsWhatWasReadNotWhatWasBuffered)
{
    const ASFile file = Opened(folder.Write("a.txt", std::string(5000, 'x')), kRead);
    const ASStm stream = SUPPORT(ASFileStmRdOpen)(file, 0);
    char bytes[5];
    EXPECT_EQ(SUPPORT(ASStmRead)(bytes, 1, 5, stream), 5);
    EXPECT_EQ(EXTRA(ASCabReadFromStream)(stream), nullptr);  // looks ahead and goes back
    SUPPORT(ASStmClose)(stream);
    EXPECT_EQ(SUPPORT(ASFileGetPos)(file), 5);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
}

TEST_F(Streams, ItemsAreCountedWholeAndUnusableArgumentsRaise)
{
    const ASStm stream = SUPPORT(ASMemStmRdOpen)("1234567", 7);
    char bytes[16] = {};
    EXPECT_EQ(SUPPORT(ASStmRead)(bytes, 0, 5, stream), 0);
    EXPECT_EQ(SUPPORT(ASStmRead)(bytes, 3, 5, stream), 2);
    EXPECT_REFUSED(SUPPORT(ASStmRead)(bytes, -1, 1, stream));
    EXPECT_REFUSED(SUPPORT(ASStmRead)(bytes, 1, 1, nullptr));
    EXPECT_REFUSED(SUPPORT(ASStmWrite)(bytes, 1, 1, stream));
    EXPECT_REFUSED(SUPPORT(ASFileStmRdOpen)(nullptr, 0));
    SUPPORT(ASStmClose)(stream);
    EXPECT_REFUSED(SUPPORT(ASStmClose)(stream));
}

TEST_F(Streams, AFullDiskIsReportedAtTheLatestByClosing)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
    const ASFile file = Opened("/dev/full", kWrite);
    EXPECT_RAISES(fileErrDiskFull, SUPPORT(ASFileWrite)(file, "x", 1));
    const OwnCab cab = EXTRA(ASCabNew)();
    ASStm stream = SUPPORT(ASFileStmWrOpen)(file, 0);
    EXTRA(ASCabWriteToStream)(cab, stream);  // small: it waits in the buffer
    EXPECT_RAISES(fileErrDiskFull, SUPPORT(ASStmFlush)(stream));
    EXPECT_RAISES(fileErrDiskFull, SUPPORT(ASStmClose)(stream));
    EXTRA(ASCabPutBinary)(cab, "b", openhost::SharedCopy(std::string(5000, 'x')), 5000);
    stream = SUPPORT(ASFileStmWrOpen)(file, 0);
    EXPECT_RAISES(fileErrDiskFull, EXTRA(ASCabWriteToStream)(cab, stream));
    EXPECT_RAISES(fileErrDiskFull, SUPPORT(ASStmClose)(stream));
    EXPECT_EQ(openhost::LiveStreams(), 0u);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
}

TEST_F(Streams, AFileClosedBeforeItsStreamLivesAsLongAsTheStream)
{
    const ASFile file = Opened(folder / "a.txt", kCreate);
    const ASStm stream = SUPPORT(ASFileStmWrOpen)(file, 0);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
    EXPECT_REFUSED(SUPPORT(ASFileGetEOF)(file));
    EXPECT_EQ(SUPPORT(ASStmWrite)("late", 4, 1, stream), 1);
    SUPPORT(ASStmClose)(stream);
    EXPECT_EQ(FileBytes(folder / "a.txt"), "late");
}

}  // namespace
