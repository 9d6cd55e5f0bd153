#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>

#include "Pipes.h"
#include "openhost/jobs/LineStream.h"

using namespace openhost;

TEST(LineStream, NothingElseGetsBetweenTheLines)
{
    CScriptedSupervisor supervisor("first\nsecond\n");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        dup2(supervisor.WorkerInput(), STDIN_FILENO);
        dup2(supervisor.WorkerOutput(), STDOUT_FILENO);
        dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
        for (int descriptor = 3; descriptor < 64; ++descriptor) close(descriptor);  // so that 3 and 4 are taken
        const auto streams = CLineStream::TakeStandardStreams();
        if (!streams) _exit(1);
        CLineStream lines(streams->first, streams->second);
        lines.Put("a line");
        if (system("echo stray; exec 2>/dev/null; (echo inherited >&3; echo inherited >&4); read any") == 0) _exit(2);
        if (write(STDOUT_FILENO, "stray\n", 6) != 6 || std::getchar() != EOF) _exit(3);
        if (lines.NextLine() != "first" || lines.NextLine() != "second" || lines.NextLine()) _exit(4);
        _exit(lines.Flush() ? 0 : 5);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(supervisor.Said(), "a line\n");
    close(supervisor.WorkerInput());
    close(supervisor.WorkerOutput());
}
