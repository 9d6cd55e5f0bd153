#pragma once

#include <deque>
#include <string>

#include "base/Text.h"
#include "platform/ChildPipes_win.h"
#include "platform/ChildProcess.h"
#include "platform/Handle_win.h"

// What starting, talking to and watching a child share; not for callers outside.
namespace platform {

/// One of the child's output streams as this process reads it.
struct ChildStream {
    CPipeReader pipe;
    CLineSplitter lines{CChildWatch::kLongestLine};
};

struct ChildState {
    struct News {
        ChildEvent event;
        std::string text;
    };

    CHandle process;
    int processId = 0;
    CHandle family;  // the job with the child and what it has started; its processes end when it is closed
    CPipeWriter input;
    ChildStream output, errors;
    std::deque<News> news;
    bool collected = false;  // gone, and known how
    ChildEnding ending;

    /// The child has ended, or is made to; takes note how.
    void Collect();
    /// Collect when it has ended by itself.
    bool CollectIfEnded();
    void KillFamily() const;
};

/// Starts the program and fills `state`. Fails: nothing is running.
FileResult StartChild(const ChildOptions& options, ChildState& state);

struct CChildProcess::State : ChildState {};

}  // namespace platform
