// What a run tells whoever watches it, beside the log.
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
