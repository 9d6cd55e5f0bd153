#include "platform/ChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <thread>

#include "platform/ThisProcess.h"
#include "support/TemporaryFolder.h"
#include "unit/platform/ChildStory.h"

using platform::CChildProcess;
using platform::CChildWatch;
using platform::ChildEvent;
using platform::ChildOptions;

namespace {

ChildOptions Shell(const std::string& script) { return {.program = "/bin/sh", .arguments = {"-c", script, "shell"}}; }

bool IsAlive(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string number, name, state;
    return file >> number >> name >> state && state != "Z";
}

/// Whether the process is gone soon: what kills it does not wait for that.
bool EndsSoon(pid_t process)
{
    for (int i = 0; i < 1000 && IsAlive(process); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return !IsAlive(process);
}

}  // namespace

TEST(ChildProcess, EveryEndIsToldBehindAllThatWasWritten)
{
    const struct {
        const char *script, *lines, *errors;
        int exitCode;
        std::uint32_t signal;
    } rows[] = {
        {"echo one; echo two; echo three >&2; exit 7", "one|two|", "three|", 7, 0},
        {"printf 'a\\n\\nunfinished'; printf half >&2", "a||unfinished|", "half|", 0, 0},
        {"echo before; kill -SEGV $$", "before|", "", 0, SIGSEGV},
        {"exec >&- 2>&-; exit 3", "", "", 3, 0},
        {"read answer; echo \"got $answer\"; read answer || echo end", "got hello|end|", "", 0, 0},
        {"sleep 1000 & echo grandchild", "grandchild|", "", 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.script);
        auto child = CChildProcess::Start(Shell(row.script));
        ASSERT_TRUE(child);
        (void)child->Send("hello");
        child->CloseInput();
        const auto story = Watch(*child);
        EXPECT_TRUE(story.ended);
        EXPECT_EQ(story.lines, row.lines);
        EXPECT_EQ(story.errors, row.errors);
        EXPECT_EQ(child->Ending().exitCode, row.exitCode);
        EXPECT_EQ(child->Ending().signal, row.signal);
        EXPECT_FALSE(CChildWatch().Wait({&*child}, 0)) << "news after the end";
    }
}

TEST(ChildProcess, WhatCannotStartSaysWhyAndLeavesNothing)
{
    const CTemporaryFolder folder;
    const struct {
        std::string program;
        int error;
    } rows[] = {
        {"", ENOENT}, {folder / "missing", ENOENT}, {folder.Path(), EACCES}, {folder.Write("f", "x"), EACCES}};
    for (const auto& row : rows) {
        platform::FileResult result;
        EXPECT_FALSE(CChildProcess::Start({.program = row.program}, &result)) << row.program;
        EXPECT_EQ(result.errorNumber, row.error) << row.program;
    }
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left to collect";
}

TEST(ChildProcess, FindsOnlyWhatWasMeantForIt)
{
    setenv("FERRULE_TEST_KEPT", "kept", 1);
    setenv("FERRULE_TEST_CHANGED", "old", 1);
    setenv("FERRULE_TEST_GONE", "old", 1);
    // High numbers: the shell opens pipes of its own.
    const int inherited = fcntl(STDERR_FILENO, F_DUPFD, 20), other = fcntl(STDERR_FILENO, F_DUPFD, 20);
    auto options = Shell(
        "echo \"$# $1\"; echo $FERRULE_TEST_KEPT,$FERRULE_TEST_CHANGED,${FERRULE_TEST_GONE-gone},$FERRULE_TEST_NEW; "
        "echo $(cd /proc/$$/fd; echo *); while read -r name value; do case $name in SigBlk:|SigIgn:) echo $value;; "
        "esac; done </proc/$$/status");
    options.arguments.emplace_back("an \"argument\"");
    options.environment = {"FERRULE_TEST_CHANGED=new", "FERRULE_TEST_GONE", "FERRULE_TEST_NEW=a=b"};
    options.inheritedDescriptors = {inherited};
    const auto before = signal(SIGTERM, SIG_IGN);
    auto child = CChildProcess::Start(options);
    signal(SIGTERM, before);
    ASSERT_TRUE(child);
    const auto story = Watch(*child);
    EXPECT_EQ(story.lines.substr(0, story.lines.find("0 1 2")), "1 an \"argument\"|kept,new,gone,a=b|");
    const std::string numbers = ' ' + story.lines.substr(story.lines.find("0 1 2"));
    EXPECT_NE(numbers.find(' ' + std::to_string(inherited)), std::string::npos) << numbers;
    EXPECT_EQ(numbers.find(' ' + std::to_string(other) + ' '), std::string::npos) << numbers;
    EXPECT_TRUE(numbers.ends_with("|0000000000000000|0000000000000000|")) << numbers;
    close(inherited);
    close(other);
}

TEST(ChildProcess, SendingNeverWaitsAndNeverKills)
{
    const std::string big(1'000'000, 'x');
    auto slow = CChildProcess::Start(Shell("read go; wc -c; echo done"));
    ASSERT_TRUE(slow);
    EXPECT_TRUE(slow->Send("go")) << "the shell reads byte by byte and leaves the rest to its command";
    EXPECT_TRUE(slow->Send(big)) << "more than the pipe holds";
    slow->CloseInput();
    EXPECT_EQ(slow->Send("late").errorNumber, EPIPE);
    EXPECT_EQ(Watch(*slow).lines, "1000001|done|");

    auto deaf = CChildProcess::Start(Shell("exec <&-; echo deaf; sleep 1000"));
    ASSERT_TRUE(deaf);
    ASSERT_TRUE(CChildWatch().Wait({&*deaf}, kPatience));
    EXPECT_EQ(deaf->Send("anybody?").errorNumber, EPIPE);
    deaf->Kill();
    EXPECT_TRUE(Watch(*deaf).ended);
    EXPECT_EQ(deaf->Ending().signal, std::uint32_t{SIGKILL});
    EXPECT_EQ(deaf->Send("after the end").errorNumber, EPIPE);
}

TEST(ChildProcess, OneThatFloodsDoesNotHideTheOthers)
{
    auto loud = CChildProcess::Start(Shell("while :; do echo noise; echo noise >&2; done"));
    auto silent = CChildProcess::Start(Shell("sleep 1000"));
    auto quiet = CChildProcess::Start(Shell("echo quiet"));
    ASSERT_TRUE(loud && silent && quiet);
    EXPECT_GT(loud->ResidentBytes(), 0u);
    CChildWatch watch;
    for (bool quietEnded = false; !quietEnded;) {
        const auto news = watch.Wait({&*loud, &*silent, &*quiet}, kPatience);
        ASSERT_TRUE(news);
        quietEnded = news->child == &*quiet && news->event == ChildEvent::Ended;
    }
    EXPECT_FALSE(watch.Wait({&*silent}, 20)) << "it says nothing";
    const pid_t loudId = loud->ProcessId();
    loud.reset();
    EXPECT_FALSE(IsAlive(loudId));
    EXPECT_EQ(waitpid(loudId, nullptr, WNOHANG), -1) << "collected already";
}

TEST(ChildProcess, WhatItStartedEndsWithItUnlessDetached)
{
    auto child =
        CChildProcess::Start(Shell("sleep 1000 & echo $!; setsid sh -c 'echo $$; exec sleep 1000' & read never"));
    ASSERT_TRUE(child);
    CChildWatch watch;
    const auto inGroup = watch.Wait({&*child}, kPatience), detached = watch.Wait({&*child}, kPatience);
    ASSERT_TRUE(inGroup && detached);
    const pid_t grandchild = std::stoi(inGroup->text), stranger = std::stoi(detached->text);
    child->CloseInput();
    EXPECT_TRUE(Watch(*child).ended) << "the stranger holds the pipes open and is not waited for";
    EXPECT_TRUE(EndsSoon(grandchild));
    EXPECT_TRUE(IsAlive(stranger));
    kill(stranger, SIGKILL);
}

TEST(ChildProcess, ItEndsTogetherWithTheProcessThatStartedIt)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t parent = fork();
    if (parent == 0) {
        auto child = CChildProcess::Start(Shell("sleep 1000"));
        const pid_t number = child ? child->ProcessId() : 0;
        (void)!write(ends[1], &number, sizeof number);
        kill(getpid(), SIGKILL);
    }
    waitpid(parent, nullptr, 0);
    pid_t child = 0;
    ASSERT_EQ(read(ends[0], &child, sizeof child), static_cast<ssize_t>(sizeof child));
    ASSERT_GT(child, 0);
    EXPECT_TRUE(EndsSoon(child));
    for (const int end : ends) close(end);
}

TEST(ChildProcess, ItsMemoryIsLimited)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer needs all addresses";
#endif
    auto options = Shell("ulimit -v");
    options.addressSpaceBytes = 64 << 20;
    auto child = CChildProcess::Start(options);
    ASSERT_TRUE(child);
    EXPECT_EQ(Watch(*child).lines, "65536|");
}

// In a process of its own, because what it changes stays: all standard streams are closed, and signals are counted.
TEST(ChildProcess, WorksWithoutStandardStreamsAndWakesUpOnInterrupts)
{
    const auto check = [] {
        for (const int stream : {0, 1, 2}) close(stream);
        signal(SIGHUP, SIG_IGN);
        signal(SIGINT, SIG_DFL);  // whoever started the tests may ignore it
        platform::CountInterrupts();
        auto child = CChildProcess::Start(Shell("read line; echo $line; echo error >&2; read line"));
        if (!child || !child->Send("hello")) return 1;
        CChildWatch watch;
        for (int i = 0; i < 2; ++i) {
            const auto news = watch.Wait({&*child}, kPatience);
            if (!news || news->text != (news->event == ChildEvent::Line ? "hello" : "error")) return 2;
        }
        raise(SIGHUP);
        if (platform::Interrupts() != 0 || watch.Wait({&*child}, 1)) return 3;  // kept ignored
        raise(SIGINT);
        raise(SIGTERM);
        if (platform::Interrupts() != 2 || watch.Wait({&*child}, 1 << 30)) return 4;
        child->Kill();
        return Watch(*child).ended ? 0 : 5;
    };
    const pid_t process = fork();
    if (process == 0) _exit(check());
    int status = 0;
    ASSERT_EQ(waitpid(process, &status, 0), process);
    EXPECT_EQ(status, 0) << "step " << WEXITSTATUS(status) << ", signal " << WTERMSIG(status);
}
