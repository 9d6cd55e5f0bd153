#include <gtest/gtest.h>

#include "platform/Handle_win.h"
#include "platform/WideText_win.h"
#include "support/TemporaryFolder.h"

using platform::CHandle;

// Else the first file opened takes the place of a stream, and messages are written into it.
TEST(ThisProcess, StandardStreamsThatAreMissingLeadNowhere)
{
    for (const HANDLE missing : {HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
        const CTemporaryFolder folder;
        auto line =
            platform::WideText(std::string("\"") + CHILD_PROGRAM + "\" streams \"" + (folder / "document") + "\"");
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = startup.hStdOutput = startup.hStdError = missing;
        PROCESS_INFORMATION started{};
        ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr, nullptr,
                                   &startup, &started));
        const CHandle process(started.hProcess), thread(started.hThread);
        ASSERT_EQ(WaitForSingleObject(process.Get(), 30'000), WAIT_OBJECT_0);
        DWORD step = 99;
        EXPECT_TRUE(GetExitCodeProcess(process.Get(), &step));
        EXPECT_EQ(step, 0u);
        EXPECT_EQ(FileBytes(folder / "document"), "its own\n");
    }
}
