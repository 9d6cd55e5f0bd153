#include "supervisor/RunFolder.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

TEST(ScratchFolder, IsPrivateAndWhatKilledProcessesLeftIsSwept)
{
    const CTemporaryFolder temporary, elsewhere;
    const char* const former = std::getenv("TMPDIR");
    const std::string restored = former ? former : "";
    setenv("TMPDIR", temporary.Path().c_str(), 1);
    const auto victim = elsewhere.Write("lock", "somebody's");
    fs::create_directory_symlink(elsewhere.Path(), temporary / "ferrule-scratch-link");
    const auto young = temporary.MakeFolder("ferrule-scratch-young");  // being made by another process
    const pid_t killed = fork();
    if (killed == 0) {
        const CScratchFolder scratch;
        fs::create_directories(scratch.Path() + "/worker-1/deep");
        _exit(scratch.Path().empty() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(killed, &status, 0), killed);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(temporary.EntryCount(), 3u) << "the killed one left its folder";
    {
        const CScratchFolder first;
        EXPECT_EQ(fs::status(first.Path()).permissions(), fs::perms(0700));
        EXPECT_EQ(temporary.EntryCount(), 3u) << "swept";
        const CScratchFolder second;
        EXPECT_TRUE(fs::exists(first.Path())) << "a living one stays";
        EXPECT_NE(first.Path(), second.Path());
        EXPECT_EQ(temporary.EntryCount(), 4u);
    }
    fs::last_write_time(young, fs::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_TRUE(geteuid() != 0 || chown(young.c_str(), 4711, 4711) == 0);
    {
        const CScratchFolder third;
    }
    EXPECT_EQ(fs::exists(young), geteuid() == 0) << "another user's is not touched";
    EXPECT_EQ(FileBytes(victim), "somebody's");
    former ? setenv("TMPDIR", restored.c_str(), 1) : unsetenv("TMPDIR");
}
