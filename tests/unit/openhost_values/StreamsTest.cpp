#include <algorithm>
#include <cstring>
#include <filesystem>

#include "support/TemporaryFolder.h"
#include "unit/openhost_values/ValuesHost.h"

namespace {

constexpr ASFileMode kRead = ASFILE_READ;
constexpr ASFileMode kCreate = ASFILE_WRITE | ASFILE_CREATE;

class Streams : public CValuesHost {
protected:
    static ASFile Opened(const std::string& native, ASFileMode mode)
    {
        const ASPathName path = openhost::NewPath(native);
        ASFile file = nullptr;
        EXPECT_EQ(SUPPORT(ASFileSysOpenFile)(nullptr, path, mode, &file), 0) << native;
        SUPPORT(ASFileSysReleasePath)(nullptr, path);
        return file;
    }
    CTemporaryFolder folder;
};

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
    const ASErrorCode raised[] = {
        Raised([&] {
            SUPPORT(ASStmRead)
            (bytes, -1, 1, stream);
        }),
        Raised([&] {
            SUPPORT(ASStmRead)
            (nullptr, 1, 1, stream);
        }),
        Raised([&] {
            SUPPORT(ASStmRead)
            (bytes, 1, 1, nullptr);
        }),
        Raised([&] {
            SUPPORT(ASStmWrite)
            (bytes, 1, 1, stream);
        }),
        Raised([&] {
            SUPPORT(ASFileStmRdOpen)
            (nullptr, 0);
        }),
        Raised([&] {
            SUPPORT(ASMemStmRdOpen)
            (nullptr, 1);
        }),
        Raised([&] {
            SUPPORT(ASProcStmRdOpen)
            (nullptr, nullptr);
        }),
        Raised([&] {
            SUPPORT(ASProcStmWrOpen)
            (nullptr, nullptr, nullptr);
        }),
        Raised([&] {
            SUPPORT(ASProcStmRdOpenEx)
            (nullptr, nullptr);
        }),
    };
    for (const ASErrorCode code : raised) EXPECT_EQ(code, BadParm()) << "row " << &code - raised;
    SUPPORT(ASStmClose)(stream);
    EXPECT_EQ(Raised([&] { SUPPORT(ASStmClose)(stream); }), genErrBadParm);
}

TEST_F(Streams, AFullDiskIsReportedAtTheLatestByClosing)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
    const ASFile file = Opened("/dev/full", ASFILE_WRITE);
    const ASCab cab = EXTRA(ASCabNew)();
    ASStm stream = SUPPORT(ASFileStmWrOpen)(file, 0);
    EXTRA(ASCabWriteToStream)(cab, stream);  // small: it waits in the buffer
    EXPECT_EQ(Raised([&] { SUPPORT(ASStmFlush)(stream); }), fileErrDiskFull);
    EXPECT_EQ(Raised([&] { SUPPORT(ASStmClose)(stream); }), fileErrDiskFull);
    EXTRA(ASCabPutBinary)(cab, "b", openhost::SharedCopy(std::string(5000, 'x')), 5000);
    stream = SUPPORT(ASFileStmWrOpen)(file, 0);
    EXPECT_EQ(Raised([&] { EXTRA(ASCabWriteToStream)(cab, stream); }), fileErrDiskFull);
    EXPECT_EQ(Raised([&] { SUPPORT(ASStmClose)(stream); }), fileErrDiskFull);
    EXPECT_EQ(openhost::LiveStreams(), 0u);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
    EXTRA(ASCabDestroy)(cab);
}

TEST_F(Streams, AFileClosedBeforeItsStreamLivesAsLongAsTheStream)
{
    const ASFile file = Opened(folder / "a.txt", kCreate);
    const ASStm stream = SUPPORT(ASFileStmWrOpen)(file, 0);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
    EXPECT_EQ(Raised([&] { SUPPORT(ASFileGetEOF)(file); }), genErrBadParm);
    EXPECT_EQ(SUPPORT(ASStmWrite)("late", 4, 1, stream), 1);
    SUPPORT(ASStmClose)(stream);
    EXPECT_EQ(FileBytes(folder / "a.txt"), "late");
}

/// What stands behind a stream of procedures in these tests.
struct Source {
    std::string bytes;
    std::size_t at = 0;
    ASTCount answer = 0;  // when not 0, the answer of every call
    ASErrorCode raise = 0;
    int destroyed = 0;

    static ASTCount HOSTCALL Read(char* data, ASTArraySize size, void* self)
    {
        auto& source = *static_cast<Source*>(self);
        if (source.raise) CORE(ASRaise)(source.raise);
        if (source.answer) return source.answer;
        const std::size_t part =
            std::min<std::size_t>({static_cast<std::size_t>(size), source.bytes.size() - source.at, 3});
        std::memcpy(data, source.bytes.data() + source.at, part);
        source.at += part;
        return static_cast<ASTCount>(part);
    }
    static ASTCount HOSTCALL Write(char* data, ASTArraySize size, void* self)
    {
        auto& source = *static_cast<Source*>(self);
        if (source.raise) CORE(ASRaise)(source.raise);
        if (source.answer) return source.answer;
        const std::size_t part = std::min<std::size_t>(static_cast<std::size_t>(size), 3);
        if (source.bytes.size() >= 10) return 0;
        source.bytes.append(data, part);
        return static_cast<ASTCount>(part);
    }
    static void HOSTCALL Destroy(void* self) { ++static_cast<Source*>(self)->destroyed; }
};

TEST_F(Streams, ProceduresMayDealWithFewerBytesAndMayRaise)
{
    Source source{"1234567890"};
    ASProcStmRdExHandlerRec handler{};
    handler.size = sizeof handler;
    handler.readProc = &Source::Read;
    handler.destroyProc = &Source::Destroy;
    const ASStm reading = SUPPORT(ASProcStmRdOpenEx)(&handler, &source);
    char bytes[20] = {};
    EXPECT_EQ(SUPPORT(ASStmRead)(bytes, 1, 7, reading), 7);
    EXPECT_EQ(source.at, 7u);  // not more than was asked for
    source.raise = fileErrIOTimeout;
    EXPECT_EQ(Raised([&] { SUPPORT(ASStmRead)(bytes, 1, 1, reading); }), fileErrIOTimeout);
    source.raise = 0;
    for (const ASTCount answer : {-1, 1000000}) {
        source.answer = answer;
        EXPECT_EQ(Raised([&] { SUPPORT(ASStmRead)(bytes, 1, 1, reading); }), fileErrRead);
    }
    source.answer = 0;
    EXPECT_EQ(SUPPORT(ASStmRead)(bytes, 1, 20, reading), 3);
    SUPPORT(ASStmClose)(reading);

    Source target;
    const ASStm writing = SUPPORT(ASProcStmWrOpen)(&Source::Write, &Source::Destroy, &target);
    EXPECT_EQ(SUPPORT(ASStmWrite)("1234567890", 5, 2, writing), 2);
    EXPECT_EQ(target.bytes, "1234567890");
    EXPECT_EQ(Raised([&] { SUPPORT(ASStmWrite)("x", 1, 1, writing); }), fileErrWrite);
    target.raise = fileErrDiskFull;
    EXPECT_EQ(Raised([&] { SUPPORT(ASStmWrite)("x", 1, 1, writing); }), fileErrDiskFull);
    SUPPORT(ASStmClose)(writing);
    EXPECT_EQ(source.destroyed, 1);
    EXPECT_EQ(target.destroyed, 1);
}

}  // namespace
