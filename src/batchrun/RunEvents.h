// What a run asks of its surroundings: to be watched, and that the host is closed at its end. Implemented above this
// folder.
#pragma once

#include <string>

#include "engine/Work.h"
#include "protocol/Outcomes.h"

/// Order: RunStarts once, then FileDone once for each input that was begun, then RunEnds exactly once; a run that
/// does not get as far as its inputs sends RunEnds alone. None of them throws.
class CRunEvents {
public:
    virtual ~CRunEvents() = default;
    virtual void RunStarts(int inputs) = 0;
    /// What a run logs before its first file is complete.
    virtual void InputsCounted() {}
    /// Around the sequence's preflight, whose log lines stand among those of a file: before (true) and after (false).
    virtual void SequencePreflight(bool /*begins*/) {}
    /// The present file's results are written; its final action, which is something to do, comes next.
    virtual void FinalActionBegins() {}
    virtual void FileDone(const ProcessedFile& file) = 0;
    virtual void RunEnds(RunEnd end, const std::string& message) = 0;
};

/// Closing the host at the end of an unattended run; implemented above this folder.
class CHostCloser {
public:
    virtual ~CHostCloser() = default;

    /// Asks the host to end; it ends after the current host call has returned. Logs what it did.
    /// May throw CHostException when the host raises.
    virtual void CloseHost() = 0;
};
