#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include <gtest/gtest.h>

#include "ScriptedOverseer.h"
#include "platform/Programs.h"

namespace {

std::string WriteProgram(const CTemporaryFolder& folder, const std::string& name, const std::string& text)
{
    const auto path = folder.Write(name, text);
    std::filesystem::permissions(path, std::filesystem::perms(0755));
    return path;
}

/// What a started program writes into a pipe, up to its end.
class CPipe {
public:
    explicit CPipe(const std::string& path)
    {
        if (mkfifo(path.c_str(), 0600) == 0) m_reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    }
    ~CPipe() { close(m_reader); }
    std::string ReadToEnd()
    {
        constexpr int kPatienceMilliseconds = 30'000;
        std::string text;
        char buffer[4096];
        pollfd waiting{m_reader, POLLIN, 0};
        while (poll(&waiting, 1, kPatienceMilliseconds) > 0) {
            const ssize_t count = read(m_reader, buffer, sizeof buffer);
            if (count <= 0) break;
            text.append(buffer, static_cast<std::size_t>(count));
        }
        return text;
    }

private:
    int m_reader = -1;
};

// What a program finds when it starts: its arguments, standard streams, and the signals that are blocked or ignored.
// The status comes first, and without a child: a shell that forks changes what it blocks.
constexpr char kTellAll[] =
    "exec 3> \"${0%/*}/pipe\"\n"
    "while read -r name value; do\n"
    "  case $name in SigBlk:|SigIgn:) echo \"$value\" >&3;; esac\n"
    "done < /proc/$$/status\n"
    "echo \"$# $1\" >&3\n"
    "streams=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2)\n"
    "echo \"$streams\" >&3\n";

}  // namespace

TEST(Programs, StartWithTheDocumentAsOneArgumentAndAFreshState)
{
    const struct {
        const char* name;
        bool quoted, firstLine;
    } rows[] = {{"plain", false, true}, {"with blank", true, true}, {"no first line", false, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const CTemporaryFolder folder;
        CPipe pipe(folder / "pipe");
        auto program = WriteProgram(folder, row.name, std::string(row.firstLine ? "#!/bin/sh\n" : "") + kTellAll);
        if (row.quoted) program = '"' + program + '"';
        sigset_t blocked, before;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGTERM);
        sigprocmask(SIG_BLOCK, &blocked, &before);
        const auto handler = signal(SIGPIPE, SIG_IGN);
        EXPECT_TRUE(platform::OpenWithShell(program, "a \"b\" $HOME;'c.pdf"));
        signal(SIGPIPE, handler);
        sigprocmask(SIG_SETMASK, &before, nullptr);
        EXPECT_EQ(pipe.ReadToEnd(),
                  "0000000000000000\n0000000000000000\n1 a \"b\" $HOME;'c.pdf\n"
                  "/dev/null\n/dev/null\n/dev/null\n");
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left to collect";
        EXPECT_EQ(errno, ECHILD);
    }
}

TEST(Programs, WhatCannotStartIsReportedAtOnce)
{
    const CTemporaryFolder folder;
    folder.Write("data", "no program");
    const std::string rows[] = {
        "", "\"\"", folder / "missing", folder.Path(), folder / "data", "no-such-program-in-the-path"};
    for (const auto& program : rows) {
        EXPECT_FALSE(platform::OpenWithShell(program, "x")) << program;
        for (const bool trial : {false, true}) {
            CScriptedOverseer overseer(COverseer::Answer::Pretend, trial);
            InstallOverseer(&overseer);
            EXPECT_FALSE(platform::OpenWithShell(program, "x")) << program;
            EXPECT_EQ(overseer.asked, "") << "for what cannot be done";
        }
    }
    EXPECT_FALSE(platform::OpenWithShell(WriteProgram(folder, "bad", "#!/no/such/interpreter\n"), "x"));
    EXPECT_TRUE(platform::OpenWithShell("true", "x")) << "looked up in the path";
}

TEST(Programs, StartOnlyWhenTheOverseerAllows)
{
    const CTemporaryFolder folder;
    CPipe pipe(folder / "pipe");
    const auto program = WriteProgram(folder, "program", "#!/bin/sh\necho \"$1\" > \"${0%/*}/pipe\"\n");
    const std::pair<COverseer::Answer, bool> rows[] = {
        {COverseer::Answer::Refuse, false}, {COverseer::Answer::Pretend, true}, {COverseer::Answer::Go, true}};
    for (const auto& [answer, started] : rows) {
        CScriptedOverseer overseer(answer);
        InstallOverseer(&overseer);
        const auto argument = folder.Write(std::to_string(static_cast<int>(answer)), "content");
        EXPECT_EQ(platform::OpenWithShell('"' + program + '"', argument), started);
        EXPECT_EQ(overseer.asked, "start content>program;");
    }
    EXPECT_EQ(pipe.ReadToEnd(), folder / "0" + "\n") << "only the allowed start";
}
