#include <gtest/gtest.h>

#include "platform/ChildProcess.h"
#include "platform/Files.h"
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

/// This program with one of its tests.
ChildOptions ThisTest(const std::string& name)
{
    return {.program = platform::ExecutablePath(),
            .arguments = {"--gtest_also_run_disabled_tests", "--gtest_filter=*." + name},
            .openedProgramsGoOn = true};
}

bool IsWine() { return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr; }

}  // namespace

ChildOptions Doing(const Words& words) { return {.program = CHILD_PROGRAM, .arguments = words}; }

CSeenProcess::CSeenProcess(const std::string& processId)
    : m_process(reinterpret_cast<long long>(
          OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, static_cast<DWORD>(std::stoul(processId)))))
{
}

CSeenProcess::~CSeenProcess() { CloseHandle(reinterpret_cast<HANDLE>(m_process)); }

bool CSeenProcess::Runs() const
{
    return WaitForSingleObject(reinterpret_cast<HANDLE>(m_process), 0) == WAIT_TIMEOUT;
}

bool CSeenProcess::EndsSoon() const
{
    return WaitForSingleObject(reinterpret_cast<HANDLE>(m_process), kPatience) == WAIT_OBJECT_0;
}

void CSeenProcess::Kill() const { TerminateProcess(reinterpret_cast<HANDLE>(m_process), 0); }

/// Open handles.
long long Leftovers()
{
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
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

TEST(ChildProcess, WhatItStartedEndsWithItUnlessLetOut)
{
    for (const bool goesOn : {false, true}) {
        auto options = Doing({"grandchild", "read"});
        options.openedProgramsGoOn = goesOn;
        auto child = CChildProcess::Start(options);
        ASSERT_TRUE(child);
        const CSeenProcess grandchild(NextLine(*child));
        child->CloseInput();
        const auto story = Watch(*child);
        EXPECT_TRUE(story.ended) << "the grandchild holds the pipes open and is not waited for";
        EXPECT_EQ(story.lines, "end|");
        Sleep(goesOn ? 200 : 0);
        EXPECT_TRUE(goesOn ? grandchild.Runs() : grandchild.EndsSoon()) << goesOn;
        grandchild.Kill();
    }
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
    const CSeenProcess child(line.substr(6));
    EXPECT_TRUE(child.Runs());
    CSeenProcess(std::to_string(parent->ProcessId())).Kill();
    EXPECT_TRUE(child.EndsSoon());
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
    long long before = 0;
    for (int i = 0; i < 100; ++i) {
        platform::FileResult started;
        auto child = CChildProcess::Start(Doing({"say", "x"}), &started);
        ASSERT_TRUE(child) << i << ": " << platform::ErrorText(started.errorNumber);
        (void)child->Send("unread");
        if (i % 2 == 0) {
            ASSERT_EQ(Watch(*child).lines, "x|");
        }
        child.reset();
        if (i == 3) before = Leftovers();
    }
    EXPECT_LE(Leftovers(), before);
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
