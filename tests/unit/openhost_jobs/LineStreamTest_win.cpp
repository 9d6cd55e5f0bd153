#include <gtest/gtest.h>

#include <string>

#include "platform/ChildProcess.h"

using platform::CChildProcess;
using platform::ChildEvent;

TEST(LineStream, NothingElseGetsBetweenTheLines)
{
    auto child = CChildProcess::Start({.program = LINE_PROGRAM});
    ASSERT_TRUE(child);
    EXPECT_TRUE(child->Send("first\r"));
    EXPECT_TRUE(child->Send("\xC3\xBC"));
    child->CloseInput();
    constexpr int kPatience = 30'000;
    std::string lines, errors;
    for (bool ended = false; !ended;) {
        const auto news = platform::CChildWatch().Wait({&*child}, kPatience);
        ASSERT_TRUE(news);
        ended = news->event == ChildEvent::Ended;
        if (!ended) (news->event == ChildEvent::Line ? lines : errors) += news->text + '|';
    }
    EXPECT_EQ(child->Ending().exitCode, 0) << "the step that failed";
    EXPECT_EQ(lines, "a line|");
    EXPECT_EQ(errors, "stray by the library|stray by the system|stray by a program\r|");
}
