#include <gtest/gtest.h>

#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"
#include "unit/platform/ChildStory.h"

using platform::CChildProcess;
using platform::CChildWatch;
using platform::ChildEvent;
using platform::FileProblem;

namespace {

#ifdef _WIN32
constexpr std::uint32_t kCrash = 0xC0000005, kAbort = 0xC0000409;
constexpr FileProblem kFolderProblem = FileProblem::IsAFolder, kDataProblem = FileProblem::Other;
#else
constexpr std::uint32_t kCrash = 11;
constexpr FileProblem kFolderProblem = FileProblem::NoAccess, kDataProblem = FileProblem::NoAccess;
#endif
constexpr std::uint32_t kKilled = 9;

FileProblem SendingTo(CChildProcess& child, const std::string& line) { return platform::ProblemOf(child.Send(line)); }

}  // namespace

TEST(ChildProcess, EveryEndIsToldBehindAllThatWasWritten)
{
    const struct {
        std::vector<std::string> words;
        const char *lines, *errors;
        int exitCode;
        std::uint32_t signal;
    } rows[] = {
        {{"say", "one", "say", "two", "error", "three\n", "exit", "7"}, "one|two|", "three|", 7, 0},
        {{"part", "a\n\nunfinished", "part", "", "error", "half"}, "a||unfinished|", "half|", 0, 0},
        {{"say", "before", "crash"}, "before|", "", 0, kCrash},
        {{"mute", "exit", "3"}, "", "", 3, 0},
        {{"read", "read"}, "got hello|end|", "", 0, 0},
#ifdef _WIN32
        {{"say", "carriage return\r", "print", "none"}, "carriage return\r|none|", "", 0, 0},
        {{"say", "before", "abort"}, "before|", "", 0, kAbort},
#endif
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.words[0] + ' ' + row.words[1]);
        auto child = CChildProcess::Start(Doing(row.words));
        ASSERT_TRUE(child);
        (void)child->Send("hello");
        child->CloseInput();
        const auto story = Watch(*child);
        EXPECT_TRUE(story.ended);
        EXPECT_EQ(story.lines, row.lines);
        EXPECT_EQ(story.errors, row.errors);
        EXPECT_EQ(child->Ending().exitCode, row.exitCode);
        EXPECT_EQ(child->Ending().signal, row.signal);
        EXPECT_EQ(child->ResidentBytes(), 0u);
        EXPECT_FALSE(CChildWatch().Wait({&*child}, 0)) << "news after the end";
    }
}

TEST(ChildProcess, WhatCannotStartSaysWhyAndLeavesNothing)
{
    const CTemporaryFolder folder;
    const struct {
        std::string program;
        FileProblem problem;
    } rows[] = {{"", FileProblem::Missing},
                {folder / "missing.exe", FileProblem::Missing},
                {folder.Path(), kFolderProblem},
                {folder.Write("data.exe", "x"), kDataProblem}};
    long long before = 0;
    for (const bool warm : {false, true}) {
        if (warm) before = Leftovers();
        for (const auto& row : rows) {
            platform::FileResult result;
            EXPECT_FALSE(CChildProcess::Start({.program = row.program}, &result)) << row.program;
            EXPECT_EQ(platform::ProblemOf(result), row.problem) << row.program;
        }
    }
    EXPECT_EQ(Leftovers(), before);
}

TEST(ChildProcess, SendingNeverWaitsAndNeverKills)
{
    const std::string big(1'000'000, 'x');
    auto slow = CChildProcess::Start(Doing({"read", "count", "say", "done"}));
    ASSERT_TRUE(slow);
    EXPECT_TRUE(slow->Send("go"));
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(slow->Send(big)) << "more than the pipe holds";
    slow->CloseInput();
    EXPECT_EQ(SendingTo(*slow, "late"), FileProblem::NobodyReads);
    EXPECT_EQ(Watch(*slow).lines, "got go|3000003|done|");

    auto idle = CChildProcess::Start(Doing({"say", "idle", "wait"}));
    ASSERT_TRUE(idle);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(idle->Send(big));
    EXPECT_EQ(NextLine(*idle), "idle");
    idle->Kill();
    EXPECT_TRUE(Watch(*idle).ended);
    EXPECT_EQ(idle->Ending().signal, kKilled);
    EXPECT_EQ(SendingTo(*idle, "after the end"), FileProblem::NobodyReads);

    auto deaf = CChildProcess::Start(Doing({"deaf", "say", "deaf", "wait"}));
    ASSERT_TRUE(deaf);
    EXPECT_EQ(NextLine(*deaf), "deaf");
    EXPECT_EQ(SendingTo(*deaf, "anybody?"), FileProblem::NobodyReads);
}

TEST(ChildProcess, OneThatFloodsDoesNotHideTheOthers)
{
    auto loud = CChildProcess::Start(Doing({"flood"}));
    auto silent = CChildProcess::Start(Doing({"wait"}));
    auto quiet = CChildProcess::Start(Doing({"say", "quiet"}));
    ASSERT_TRUE(loud && silent && quiet);
    EXPECT_GT(loud->ResidentBytes(), 0u);
    CChildWatch watch;
    for (bool quietEnded = false; !quietEnded;) {
        const auto news = watch.Wait({&*loud, &*silent, &*quiet}, kPatience);
        ASSERT_TRUE(news);
        quietEnded = news->child == &*quiet && news->event == ChildEvent::Ended;
    }
    EXPECT_FALSE(watch.Wait({&*silent}, 20)) << "it says nothing";
    const CSeenProcess seen(std::to_string(loud->ProcessId()));
    loud.reset();
    EXPECT_FALSE(seen.Runs());
}

TEST(ChildProcess, KillingEndsWhatItStarted)
{
    auto child = CChildProcess::Start(Doing({"grandchild", "wait"}));
    ASSERT_TRUE(child);
    const CSeenProcess grandchild(NextLine(*child));
    EXPECT_TRUE(grandchild.Runs());
    child->Kill();
    EXPECT_TRUE(Watch(*child).ended);
    EXPECT_EQ(child->Ending().signal, kKilled);
    EXPECT_TRUE(grandchild.EndsSoon());
}
