#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ScriptedOverseer.h"
#include "platform/Programs.h"

namespace fs = std::filesystem;

TEST(OverseerPosix, ProgramsStartOnlyWhenAllowed)
{
    const CTemporaryFolder folder;
    const auto program = folder.Write("program", "#!/bin/sh\necho \"$1\" > \"${0%/*}/pipe\"\n");
    fs::permissions(program, fs::perms(0755));
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int reader = open((folder / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
    const struct {
        COverseer::Answer answer;
        bool started;
    } rows[] = {
        {COverseer::Answer::Refuse, false}, {COverseer::Answer::Pretend, true}, {COverseer::Answer::Go, true}};
    for (const auto& row : rows) {
        CScriptedOverseer overseer(row.answer);
        InstallOverseer(&overseer);
        const auto argument = folder.Write(std::to_string(static_cast<int>(row.answer)), "content");
        EXPECT_EQ(platform::OpenWithShell('"' + program + '"', argument), row.started);
        EXPECT_EQ(overseer.asked, "start content>program;");
    }
    pollfd waiting{reader, POLLIN, 0};
    ASSERT_EQ(poll(&waiting, 1, 30'000), 1);
    char text[4096] = "";
    ASSERT_GT(read(reader, text, sizeof text - 1), 0);
    EXPECT_EQ(text, folder / "0" + "\n") << "only the allowed start";
    close(reader);
}

TEST(OverseerPosix, NothingIsAskedForProgramsThatCannotStart)
{
    const CTemporaryFolder folder;
    const auto file = folder.Write("not executable", "x");
    for (const bool trial : {false, true}) {
        CScriptedOverseer overseer(COverseer::Answer::Pretend, trial);
        InstallOverseer(&overseer);
        EXPECT_FALSE(platform::OpenWithShell(folder / "missing", file));
        EXPECT_FALSE(platform::OpenWithShell(file, file));
        EXPECT_EQ(overseer.asked, "");
    }
}
