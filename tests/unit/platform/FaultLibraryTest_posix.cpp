#include <algorithm>
#include <csignal>

#include <gtest/gtest.h>

#include "support/TemporaryFolder.h"
#include "unit/platform/ChildStory.h"

#ifdef __SANITIZE_ADDRESS__
constexpr char kPreloadsAnyway[] = "ASAN_OPTIONS=verify_asan_link_order=0";
#else
constexpr char kPreloadsAnyway[] = "FERRULE_TEST_UNUSED";
#endif

namespace {

platform::ChildEnding RunProbe(const CTemporaryFolder& folder, const std::string& setting)
{
    auto probe =
        platform::CChildProcess::Start({.program = FAULT_PROBE,
                                        .arguments = {folder / "from", folder / "to"},
                                        .environment = {std::string("LD_PRELOAD=") + FAULTS_LIBRARY, kPreloadsAnyway,
                                                        "FERRULE_FAULT_COUNT=" + folder / "list", setting}});
    EXPECT_TRUE(probe && Watch(*probe).ended);
    return probe->Ending();
}

/// The calls so far.
long Calls(const CTemporaryFolder& folder)
{
    const auto list = FileBytes(folder / "list");
    return std::count(list.begin(), list.end(), '\n');
}

/// The number of the first call of that name.
long NumberOf(const CTemporaryFolder& folder, const std::string& call)
{
    const auto list = FileBytes(folder / "list");
    return 1 + std::count(list.begin(), list.begin() + static_cast<long>(list.find('\t' + call + '\t')), '\n');
}

std::string At(long number, const char* fault) { return "FERRULE_FAULT_AT=" + std::to_string(number) + fault; }

}  // namespace

TEST(FaultLibrary, CountsOverProcessesAndMakesTheOneCallFail)
{
    const CTemporaryFolder folder;
    folder.Write("from", "content");
    folder.Write("to", "older");  // so that every run makes the same calls
    ASSERT_EQ(RunProbe(folder, "FERRULE_FAULT_AT").exitCode, 0);
    const long calls = Calls(folder), flush = NumberOf(folder, "fsync"), rename = NumberOf(folder, "rename");
    ASSERT_TRUE(1 < flush && flush < rename && rename < calls && calls > 5);
    EXPECT_TRUE(FileBytes(folder / "list").starts_with("1\tplatform_fault_probe\t"));

    EXPECT_EQ(RunProbe(folder, At(calls + flush, ":ENOSPC")).exitCode, 1) << "numbers go on";
    const long third = Calls(folder) + rename;
    folder.Write("to", "old");
    EXPECT_EQ(RunProbe(folder, At(third, ":die")).signal, std::uint32_t{SIGKILL});
    EXPECT_EQ(FileBytes(folder / "to"), "old");
    EXPECT_EQ(Calls(folder), third) << "nothing behind the death";

    EXPECT_EQ(RunProbe(folder, "FERRULE_FAULT_AT=7:EWRONG").exitCode, 125) << "a typing error is no passed test";
}
