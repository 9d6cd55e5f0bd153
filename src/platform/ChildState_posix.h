#pragma once

#include <sys/types.h>

#include <deque>
#include <string>
#include <vector>

#include "base/Text.h"
#include "platform/ChildProcess.h"
#include "platform/FileHandles_posix.h"

// What starting, talking to and watching a child share; not for callers outside.
namespace platform {

/// One of the child's output streams as this process reads it.
struct ChildStream {
    CDescriptor pipe;  // none once it has ended
    CLineSplitter lines{CChildWatch::kLongestLine};
};

struct ChildState {
    struct News {
        ChildEvent event;
        std::string text;
    };

    pid_t processId = -1;
    CDescriptor end;  // readable once the child is gone; none where the system cannot tell so
    CDescriptor input;
    std::string unsent;
    bool inputEnds = false;  // as soon as nothing is unsent
    ChildStream output, errors;
    std::deque<News> news;
    bool collected = false;  // gone, and its number may belong to another process
    ChildEnding ending;

    /// The child has ended, or is made to; takes note how.
    void Collect();
    /// Collect when it has ended by itself.
    bool CollectIfEnded();
    /// The child and what it has started, unless that left its process group.
    void KillFamily() const;
    /// Writes as much of what is unsent as the pipe takes.
    FileResult SendOn();
};

/// Starts the program and fills `state`. Fails: nothing is running.
FileResult StartChild(const ChildOptions& options, ChildState& state);
/// The system was short of something that other programs may give back.
bool MayStartLater(FileResult failed);

struct CChildProcess::State : ChildState {};

}  // namespace platform
