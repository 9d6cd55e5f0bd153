#include <gtest/gtest.h>

#include "platform/ChildProcess.h"
#include "platform/FileProblem.h"
#include "platform/Handle_win.h"
#include "platform/Paths.h"
#include "platform/ThisProcess.h"
#include "support/TemporaryFolder.h"
#include "support/TestProcess.h"
#include "unit/platform/ChildStory.h"

using platform::CChildProcess;
using platform::CChildWatch;
using platform::CHandle;
using platform::ChildEvent;
using platform::ChildOptions;
using platform::FileProblem;
using Words = std::vector<std::string>;

namespace {

ChildOptions Doing(const Words& words) { return {.program = CHILD_PROGRAM, .arguments = words}; }

/// This program with one of its tests.
ChildOptions ThisTest(const std::string& name)
{
    return {.program = platform::ExecutablePath(),
            .arguments = {"--gtest_also_run_disabled_tests", "--gtest_filter=*." + name},
            .openedProgramsGoOn = true};
}

std::string NextLine(CChildProcess& child)
{
    const auto news = CChildWatch().Wait({&child}, kPatience);
    return news ? news->text : "<nothing>";
}

CHandle Open(const std::string& processId)
{
    return CHandle(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, static_cast<DWORD>(std::stoul(processId))));
}

bool EndsSoon(const CHandle& process) { return WaitForSingleObject(process.Get(), kPatience) == WAIT_OBJECT_0; }

bool Runs(const CHandle& process) { return WaitForSingleObject(process.Get(), 200) == WAIT_TIMEOUT; }

bool IsWine() { return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr; }

DWORD HandleCount()
{
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

}  // namespace

TEST(ChildProcess, EveryEndIsToldBehindAllThatWasWritten)
{
    const struct {
        Words words;
        const char *lines, *errors;
        int exitCode;
        std::uint32_t signal;
    } rows[] = {
        {{"say", "one", "say", "two", "error", "three\n", "exit", "7"}, "one|two|", "three|", 7, 0},
        {{"part", "a\n\nunfinished", "part", "", "error", "half"}, "a||unfinished|", "half|", 0, 0},
        {{"say", "carriage return\r", "print", "none"}, "carriage return\r|none|", "", 0, 0},
        {{"say", "before", "crash"}, "before|", "", 0, 0xC0000005},
        {{"say", "before", "abort"}, "before|", "", 0, 0xC0000409},
        {{"mute", "exit", "3"}, "", "", 3, 0},
        {{"read", "read"}, "got hello|end|", "", 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.words[0] + ' ' + row.words[1]);
        auto child = CChildProcess::Start(Doing(row.words));
        ASSERT_TRUE(child);
        (void)child->Send("hello");
        child->CloseInput();
        const auto story = Watch(*child);
        EXPECT_TRUE(story.ended);
        EXPECT_EQ(story.lines, row.lines);
        EXPECT_EQ(story.errors, row.errors);
        EXPECT_EQ(child->Ending().exitCode, row.exitCode);
        EXPECT_EQ(child->Ending().signal, row.signal);
        EXPECT_EQ(child->ResidentBytes(), 0u);
        EXPECT_FALSE(CChildWatch().Wait({&*child}, 0)) << "news after the end";
    }
}

TEST(ChildProcess, WhatCannotStartSaysWhyAndLeavesNothing)
{
    const CTemporaryFolder folder;
    const struct {
        std::string program;
        FileProblem problem;
    } rows[] = {{"", FileProblem::Missing},
                {folder / "missing.exe", FileProblem::Missing},
                {folder.Path(), FileProblem::IsAFolder},
                {folder.Write("data.exe", "x"), FileProblem::Other}};
    const auto problemOf = [](const std::string& program) {
        platform::FileResult result;
        EXPECT_FALSE(CChildProcess::Start({.program = program}, &result)) << program;
        return platform::ProblemOf(result);
    };
    for (const auto& row : rows) EXPECT_EQ(problemOf(row.program), row.problem) << row.program;
    const DWORD before = HandleCount();
    for (const auto& row : rows) (void)problemOf(row.program);
    EXPECT_EQ(HandleCount(), before);
}

TEST(ChildProcess, ArgumentsArriveAsTheyWereGiven)
{
    const Words given = {"",
                         "two words",
                         "\"",
                         "a\"b c",
                         "end\\",
                         "end \\\\",
                         "\\\"x\\",
                         "C:\\a b\\",
                         "\\\\s\\s \"",
                         "*.*",
                         "%PATH% ^&|<>",
                         "tab\tand\nline",
                         "\"\"\"",
                         "gr\xC3\xBC\xC3\x9F",
                         "\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80\\"};
    Words words = {"arguments"};
    words.insert(words.end(), given.begin(), given.end());
    auto child = CChildProcess::Start(Doing(words));
    ASSERT_TRUE(child);
    EXPECT_EQ(NextLine(*child), std::to_string(given.size() + 2)) << "the run-time library counts as Windows does";
    std::string expected;
    for (const auto& argument : given) expected += '<' + argument + ">|";
    for (std::size_t line; (line = expected.find('\n')) != std::string::npos;) expected[line] = '|';
    EXPECT_EQ(Watch(*child).lines, expected);
}

TEST(ChildProcess, FindsOnlyWhatWasMeantForIt)
{
    SetEnvironmentVariableA("FERRULE_TEST_KEPT", "kept");
    SetEnvironmentVariableA("FERRULE_TEST_CHANGED", "old");
    SetEnvironmentVariableA("FERRULE_TEST_GONE", "old");
    const CTemporaryFolder folder;
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    const auto file = [&](const char* name, SECURITY_ATTRIBUTES* attributes) {
        return CHandle(CreateFileA((folder / name).c_str(), GENERIC_WRITE, 0, attributes, CREATE_ALWAYS, 0, nullptr));
    };
    const CHandle meant = file("meant", nullptr), other = file("other", &inheritable);
    const auto number = [](const CHandle& handle) { return reinterpret_cast<long long>(handle.Get()); };
    auto options =
        Doing({"variable", "FERRULE_TEST_KEPT", "variable", "FERRULE_TEST_CHANGED", "variable", "FERRULE_TEST_GONE",
               "variable", "FERRULE_TEST_NEW", "variable", "PATH", "handle", std::to_string(number(meant))});
    options.environment = {"ferrule_test_changed=new", "FERRULE_TEST_GONE", "FERRULE_TEST_NEW=a=\xC3\xBC",
                           "PATH=somewhere"};
    options.inheritedDescriptors = {number(meant)};
    auto child = CChildProcess::Start(options);
    ASSERT_TRUE(child);
    EXPECT_EQ(Watch(*child).lines, "kept|new|none|a=\xC3\xBC|somewhere|written|");
    DWORD flags = HANDLE_FLAG_INHERIT;
    EXPECT_TRUE(GetHandleInformation(meant.Get(), &flags));
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0u) << "only this child was to have it";
    auto second = CChildProcess::Start(Doing({"handle", std::to_string(number(other))}));
    ASSERT_TRUE(second);
    (void)Watch(*second);
    LARGE_INTEGER size{};
    EXPECT_TRUE(GetFileSizeEx(other.Get(), &size));
    EXPECT_EQ(size.QuadPart, 0) << "the handle was inherited";
}

TEST(ChildProcess, SendingNeverWaits)
{
    const std::string big(1'000'000, 'x');
    auto slow = CChildProcess::Start(Doing({"read", "count", "say", "done"}));
    ASSERT_TRUE(slow);
    EXPECT_TRUE(slow->Send("go"));
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(slow->Send(big)) << "more than the pipe holds";
    slow->CloseInput();
    EXPECT_EQ(platform::ProblemOf(slow->Send("late")), FileProblem::NobodyReads);
    EXPECT_EQ(Watch(*slow).lines, "got go|3000003|done|");

    auto idle = CChildProcess::Start(Doing({"say", "idle", "wait"}));
    ASSERT_TRUE(idle);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(idle->Send(big));
    EXPECT_EQ(NextLine(*idle), "idle");
    idle->Kill();
    EXPECT_TRUE(Watch(*idle).ended);
    EXPECT_EQ(idle->Ending().signal, 9u);
    EXPECT_EQ(platform::ProblemOf(idle->Send("after the end")), FileProblem::NobodyReads);
}

TEST(ChildProcess, OneThatHasClosedItsInputIsNotSentTo)
{
    auto deaf = CChildProcess::Start(Doing({"deaf", "say", "deaf", "wait"}));
    ASSERT_TRUE(deaf);
    EXPECT_EQ(NextLine(*deaf), "deaf");
    EXPECT_EQ(platform::ProblemOf(deaf->Send("anybody?")), FileProblem::NobodyReads);
}

TEST(ChildProcess, OneThatFloodsDoesNotHideTheOthers)
{
    auto loud = CChildProcess::Start(Doing({"flood"}));
    auto silent = CChildProcess::Start(Doing({"wait"}));
    auto quiet = CChildProcess::Start(Doing({"say", "quiet"}));
    ASSERT_TRUE(loud && silent && quiet);
    EXPECT_GT(loud->ResidentBytes(), 0u);
    CChildWatch watch;
    for (bool quietEnded = false; !quietEnded;) {
        const auto news = watch.Wait({&*loud, &*silent, &*quiet}, kPatience);
        ASSERT_TRUE(news);
        quietEnded = news->child == &*quiet && news->event == ChildEvent::Ended;
    }
    EXPECT_FALSE(watch.Wait({&*silent}, 20)) << "it says nothing";
    const CHandle loudProcess = Open(std::to_string(loud->ProcessId()));
    loud.reset();
    EXPECT_EQ(WaitForSingleObject(loudProcess.Get(), 0), WAIT_OBJECT_0);
}

TEST(ChildProcess, WhatItStartedEndsWithItUnlessLetOut)
{
    for (const bool goesOn : {false, true}) {
        auto options = Doing({"grandchild", "read"});
        options.openedProgramsGoOn = goesOn;
        auto child = CChildProcess::Start(options);
        ASSERT_TRUE(child);
        const CHandle grandchild = Open(NextLine(*child));
        ASSERT_TRUE(grandchild.Valid());
        child->CloseInput();
        const auto story = Watch(*child);
        EXPECT_TRUE(story.ended) << "the grandchild holds the pipes open and is not waited for";
        EXPECT_EQ(story.lines, "end|");
        EXPECT_EQ(goesOn ? Runs(grandchild) : EndsSoon(grandchild), true) << goesOn;
        TerminateProcess(grandchild.Get(), 0);
    }
}

TEST(ChildProcess, KillingEndsWhatItStarted)
{
    auto child = CChildProcess::Start(Doing({"grandchild", "wait"}));
    ASSERT_TRUE(child);
    const CHandle grandchild = Open(NextLine(*child));
    child->Kill();
    EXPECT_TRUE(Watch(*child).ended);
    EXPECT_EQ(child->Ending().signal, 9u);
    EXPECT_TRUE(EndsSoon(grandchild));
}

// The program of these tests, started once more, plays the parent.
TEST(ChildProcess, DISABLED_StartsAChildAndIsKilled)
{
    auto child = CChildProcess::Start(Doing({"wait"}));
    ASSERT_TRUE(child);
    std::printf("child %d\n", child->ProcessId());
    std::fflush(stdout);
    Sleep(INFINITE);
}

TEST(ChildProcess, ItEndsTogetherWithTheProcessThatStartedIt)
{
    auto parent = CChildProcess::Start(ThisTest("DISABLED_StartsAChildAndIsKilled"));
    ASSERT_TRUE(parent);
    std::string line;
    while (!line.starts_with("child ") && line != "<nothing>") line = NextLine(*parent);
    ASSERT_TRUE(line.starts_with("child "));
    const CHandle child = Open(line.substr(6));
    ASSERT_TRUE(child.Valid());
    const CHandle process = Open(std::to_string(parent->ProcessId()));
    TerminateProcess(process.Get(), 1);
    EXPECT_TRUE(EndsSoon(child));
}

TEST(ChildProcess, ItsMemoryIsLimited)
{
    if (IsWine()) GTEST_SKIP() << "Wine takes note of the limit and does not apply it";
    auto options = Doing({"eat", "16", "eat", "256"});
    options.addressSpaceBytes = 64 << 20;
    auto child = CChildProcess::Start(options);
    ASSERT_TRUE(child);
    EXPECT_EQ(Watch(*child).lines, "eaten|refused|");
}

TEST(ChildProcess, ManyInARowLeaveNoHandles)
{
    DWORD before = 0;
    for (int i = 0; i < 100; ++i) {
        platform::FileResult started;
        auto child = CChildProcess::Start(Doing({"say", "x"}), &started);
        ASSERT_TRUE(child) << i << ": " << platform::ErrorText(started.errorNumber);
        (void)child->Send("unread");
        if (i % 2 == 0) {
            ASSERT_EQ(Watch(*child).lines, "x|");
        }
        child.reset();
        if (i == 3) before = HandleCount();
    }
    EXPECT_LE(HandleCount(), before);
}

TEST(ChildProcess, InterruptsWakeUpTheWaitAndDoNotReachChildren)
{
    platform::CountInterrupts();
    auto child = CChildProcess::Start(Doing({"wait"}));
    ASSERT_TRUE(child);
    const int before = platform::Interrupts();
    Interrupt();
    EXPECT_FALSE(CChildWatch().Wait({&*child}, 1 << 30));
    EXPECT_EQ(platform::Interrupts(), before + 1);
    EXPECT_FALSE(CChildWatch().Wait({&*child}, 20)) << "the request was noted, and the child lives";
}
