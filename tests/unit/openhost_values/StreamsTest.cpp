#include <algorithm>
#include <cstring>
#include <filesystem>

#include "unit/openhost_values/FilesHost.h"

namespace {

using Streams = CFilesHost;

std::string Numbered(int lines)
{
    std::string text;
    for (int line = 0; line < lines; ++line) text += std::to_string(line) + "\n";
    return text;
}

TEST_F(Streams, BytesSurviveWritingAndReadingThroughEveryBufferSize)
{
    const std::string text = Numbered(5000);
    for (const ASSmallBufferSize bufferSize : {0, 1, 7, 4096, 65535}) {
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
    const ASFile file = Opened(folder.Write("a.txt", Numbered(1000)), kRead);
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
    EXPECT_REFUSED(SUPPORT(ASStmRead)(nullptr, 1, 1, stream));
    EXPECT_REFUSED(SUPPORT(ASStmRead)(bytes, 1, 1, nullptr));
    EXPECT_REFUSED(SUPPORT(ASStmWrite)(bytes, 1, 1, stream));
    EXPECT_REFUSED(SUPPORT(ASFileStmRdOpen)(nullptr, 0));
    EXPECT_REFUSED(SUPPORT(ASMemStmRdOpen)(nullptr, 1));
    EXPECT_REFUSED(SUPPORT(ASProcStmRdOpen)(nullptr, nullptr));
    EXPECT_REFUSED(SUPPORT(ASProcStmWrOpen)(nullptr, nullptr, nullptr));
    EXPECT_REFUSED(SUPPORT(ASProcStmRdOpenEx)(nullptr, nullptr));
    SUPPORT(ASStmClose)(stream);
    EXPECT_REFUSED(SUPPORT(ASStmClose)(stream));
}

TEST_F(Streams, AFullDiskIsReportedAtTheLatestByClosing)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
    const ASFile file = Opened("/dev/full", ASFILE_WRITE);
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

/// What stands behind a stream of procedures in these tests: deals with three bytes at a time, has ten.
struct Source {
    std::string bytes;
    std::size_t at = 0;
    ASTCount answer = 0;  // when not 0, the answer of every call
    ASErrorCode raise = 0;
    int destroyed = 0;

    static ASTCount HOSTCALL Deal(char* data, ASTArraySize size, Source& source, bool write)
    {
        if (source.raise) CORE(ASRaise)(source.raise);
        if (source.answer) return source.answer;
        const auto part = std::min<std::size_t>({static_cast<std::size_t>(size), 10 - source.at, 3});
        write ? source.bytes.append(data, part).data() : std::memcpy(data, &source.bytes[source.at], part);
        source.at += part;
        return static_cast<ASTCount>(part);
    }
    static ASTCount HOSTCALL Read(char* data, ASTArraySize size, void* self)
    {
        return Deal(data, size, *static_cast<Source*>(self), false);
    }
    static ASTCount HOSTCALL Write(char* data, ASTArraySize size, void* self)
    {
        return Deal(data, size, *static_cast<Source*>(self), true);
    }
    static void HOSTCALL Destroy(void* self) { ++static_cast<Source*>(self)->destroyed; }
};

TEST_F(Streams, ProceduresMayDealWithFewerBytesAndMayRaise)
{
    Source source{"1234567890"};
    ASProcStmRdExHandlerRec handler{};
    handler.size = offsetof(ASProcStmRdExHandlerRec, seekProc);
    handler.readProc = &Source::Read;
    handler.destroyProc = &Source::Destroy;
    const ASStm reading = SUPPORT(ASProcStmRdOpenEx)(&handler, &source);
    char bytes[20] = {};
    EXPECT_EQ(SUPPORT(ASStmRead)(bytes, 1, 7, reading), 7);
    EXPECT_EQ(source.at, 7u);  // not more than was asked for
    source.raise = fileErrIOTimeout;
    EXPECT_RAISES(fileErrIOTimeout, SUPPORT(ASStmRead)(bytes, 1, 1, reading));
    source.raise = 0;
    for (const ASTCount answer : {-1, 1000000}) {
        source.answer = answer;
        EXPECT_RAISES(fileErrRead, SUPPORT(ASStmRead)(bytes, 1, 1, reading));
    }
    source.answer = 0;
    EXPECT_EQ(SUPPORT(ASStmRead)(bytes, 1, 20, reading), 3);
    SUPPORT(ASStmClose)(reading);

    Source target;
    const ASStm writing = SUPPORT(ASProcStmWrOpen)(&Source::Write, &Source::Destroy, &target);
    EXPECT_EQ(SUPPORT(ASStmWrite)("1234567890", 5, 2, writing), 2);
    EXPECT_EQ(target.bytes, "1234567890");
    EXPECT_RAISES(fileErrWrite, SUPPORT(ASStmWrite)("x", 1, 1, writing));
    target.raise = fileErrDiskFull;
    EXPECT_RAISES(fileErrDiskFull, SUPPORT(ASStmWrite)("x", 1, 1, writing));
    SUPPORT(ASStmClose)(writing);
    EXPECT_EQ(source.destroyed, 1);
    EXPECT_EQ(target.destroyed, 1);
}

}  // namespace
