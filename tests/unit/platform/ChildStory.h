// What tests of children share: watching one to its end, and children that do as they are told.
#pragma once

#include <string>
#include <vector>

#include "platform/ChildProcess.h"

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

inline std::string NextLine(platform::CChildProcess& child)
{
    const auto news = platform::CChildWatch().Wait({&child}, kPatience);
    return news ? news->text : "<nothing>";
}

/// Does what the words say, one after the other: say, part and error (each with a text), exit (with a number), crash,
/// read, count, wait, flood, deaf, mute, grandchild. Windows has more, see ChildProgram_win.cpp.
platform::ChildOptions Doing(const std::vector<std::string>& words);

inline platform::ChildOptions WaitingChild() { return Doing({"wait"}); }

/// A process by its number, whoever started it.
class CSeenProcess {
public:
    explicit CSeenProcess(const std::string& processId);
    ~CSeenProcess();
    CSeenProcess(const CSeenProcess&) = delete;
    bool Runs() const;
    /// What kills it may not wait for that.
    bool EndsSoon() const;
    void Kill() const;

private:
    long long m_process;
};

/// What children may leave behind in this process.
long long Leftovers();
