// What tests of children share: watching one to its end, and one that waits for ever.
#pragma once

#include "platform/ChildProcess.h"

#include <string>

inline constexpr int kPatience = 30'000;  // milliseconds; no test waits so long unless it fails

struct Story {
    std::string lines, errors;
    bool ended = false;
};

inline Story Watch(platform::CChildProcess& child)
{
    Story story;
    platform::CChildWatch watch;
    while (!story.ended) {
        const auto news = watch.Wait({&child}, kPatience);
        if (!news) break;
        if (news->event == platform::ChildEvent::Line) story.lines += news->text + '|';
        if (news->event == platform::ChildEvent::Error) story.errors += news->text + '|';
        story.ended = news->event == platform::ChildEvent::Ended;
    }
    return story;
}

/// Reads until its input ends.
inline platform::ChildOptions WaitingChild()
{
#ifdef _WIN32
    return {.program = CHILD_PROGRAM, .arguments = {"wait"}};
#else
    return {.program = "/bin/sh", .arguments = {"-c", "read never"}};
#endif
}
