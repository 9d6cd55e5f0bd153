#include <gtest/gtest.h>

#include <csignal>
#include <sstream>

#include "platform/ChildProcess.h"
#include "support/TemporaryFolder.h"

#ifdef __SANITIZE_ADDRESS__
constexpr char kPreloadsAnyway[] = "ASAN_OPTIONS=verify_asan_link_order=0";
#else
constexpr char kPreloadsAnyway[] = "FERRULE_TEST_UNUSED";
#endif

namespace {

struct Probe {
    int exitCode, signal;
};

Probe RunProbe(const CTemporaryFolder& folder, std::vector<std::string> environment)
{
    environment.insert(environment.end(), {std::string("LD_PRELOAD=") + FAULTS_LIBRARY, kPreloadsAnyway,
                                           "FERRULE_FAULT_COUNT=" + folder / "list"});
    auto probe = platform::CChildProcess::Start(
        {.program = FAULT_PROBE, .arguments = {folder / "from", folder / "to"}, .environment = environment});
    if (!probe) return {-1, 0};
    platform::CChildWatch watch;
    while (const auto news = watch.Wait({&*probe}, 30'000)) {
        if (news->event == platform::ChildEvent::Ended) break;
    }
    return {probe->Ending().exitCode, static_cast<int>(probe->Ending().signal)};
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::string NumberOf(const std::vector<std::string>& lines, const std::string& call)
{
    for (const auto& line : lines) {
        if (line.find('\t' + call + '\t') != std::string::npos) return line.substr(0, line.find('\t'));
    }
    return "0";
}

}  // namespace

TEST(FaultLibrary, CountsOverProcessesAndMakesTheOneCallFail)
{
    const CTemporaryFolder folder;
    folder.Write("from", "content");
    folder.Write("to", "older");  // so that every run makes the same calls
    ASSERT_EQ(RunProbe(folder, {}).exitCode, 0);
    const auto calls = Lines(FileBytes(folder / "list"));
    ASSERT_GT(calls.size(), 5u);
    EXPECT_TRUE(calls.front().starts_with("1\tplatform_fault_probe\t")) << calls.front();
    const auto flush = NumberOf(calls, "fsync"), rename = NumberOf(calls, "rename");
    ASSERT_NE(flush, "0");
    ASSERT_NE(rename, "0");

    const auto again = std::to_string(calls.size() + std::stoul(flush));
    EXPECT_EQ(RunProbe(folder, {"FERRULE_FAULT_AT=" + again + ":ENOSPC"}).exitCode, 1) << "numbers go on";
    const auto third = Lines(FileBytes(folder / "list")).size() + std::stoul(rename);
    folder.Write("to", "old");
    EXPECT_EQ(RunProbe(folder, {"FERRULE_FAULT_AT=" + std::to_string(third) + ":die"}).signal, SIGKILL);
    EXPECT_EQ(FileBytes(folder / "to"), "old");
    EXPECT_EQ(Lines(FileBytes(folder / "list")).size(), third) << "nothing behind the death";
    EXPECT_EQ(RunProbe(folder, {"FERRULE_FAULT_AT=7:EWRONG"}).exitCode, 125) << "a typing error is no passed test";
}
