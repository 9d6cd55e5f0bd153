#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>

#include "platform/ChildProcess.h"
#include "platform/ThisProcess.h"
#include "support/TemporaryFolder.h"
#include "unit/platform/ChildStory.h"

using platform::CChildProcess;
using platform::CChildWatch;
using platform::ChildEvent;
using platform::ChildOptions;

namespace {

ChildOptions Shell(const std::string& script) { return {.program = "/bin/sh", .arguments = {"-c", script, "shell"}}; }

// The words of Doing.
constexpr char kDeeds[] = R"(while [ $# -gt 0 ]; do
    deed=$1
    shift
    case $deed in
        say) echo "$1"; shift;;
        part) printf %s "$1"; shift;;
        error) printf %s "$1" >&2; shift;;
        exit) exit "$1";;
        crash) kill -SEGV $$;;
        read) if read -r line; then echo "got $line"; else echo end; fi;;
        count) wc -c;;
        wait) exec sleep 1000;;
        flood) while :; do echo noise; echo noise >&2; done;;
        deaf) exec <&-;;
        mute) exec >&- 2>&-;;
        grandchild) sleep 1000 & echo $!;;
    esac
done)";

}  // namespace

ChildOptions Doing(const std::vector<std::string>& words)
{
    ChildOptions options = Shell(kDeeds);
    options.arguments.insert(options.arguments.end(), words.begin(), words.end());
    return options;
}

CSeenProcess::CSeenProcess(const std::string& processId) : m_process(std::stoll(processId)) {}

CSeenProcess::~CSeenProcess() = default;

bool CSeenProcess::Runs() const
{
    std::ifstream file("/proc/" + std::to_string(m_process) + "/stat");
    std::string number, name, state;
    return file >> number >> name >> state && state != "Z";
}

bool CSeenProcess::EndsSoon() const
{
    for (int i = 0; i < 1000 && Runs(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return !Runs();
}

void CSeenProcess::Kill() const { kill(static_cast<pid_t>(m_process), SIGKILL); }

/// 1: a child is to be collected, or runs.
long long Leftovers() { return waitpid(-1, nullptr, WNOHANG) == -1 ? 0 : 1; }

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

TEST(ChildProcess, WhatItStartedEndsWithItUnlessDetached)
{
    auto child =
        CChildProcess::Start(Shell("sleep 1000 & echo $!; setsid sh -c 'echo $$; exec sleep 1000' & read never"));
    ASSERT_TRUE(child);
    const CSeenProcess grandchild(NextLine(*child)), stranger(NextLine(*child));
    child->CloseInput();
    EXPECT_TRUE(Watch(*child).ended) << "the stranger holds the pipes open and is not waited for";
    EXPECT_TRUE(grandchild.EndsSoon());
    EXPECT_TRUE(stranger.Runs());
    stranger.Kill();
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
    EXPECT_TRUE(CSeenProcess(std::to_string(child)).EndsSoon());
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
