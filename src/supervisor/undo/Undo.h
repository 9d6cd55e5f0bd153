// Takes a run back. See docs/runs.md.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "supervisor/RunObserver.h"
#include "supervisor/undo/UndoStep.h"

struct UndoOptions {
    std::string path = {};  ///< a record, a journal or a packed run; empty: the last run of this user
    bool dryRun = false;    ///< only says what would be done
    bool partly = false;    ///< goes on although something cannot be taken back
};

/// Everything is told on the thread that called. The default answers do nothing.
class CUndoObserver {
public:
    virtual ~CUndoObserver() = default;
    /// Once, before anything else.
    virtual void Begins(const std::string& /*run*/, std::size_t /*acts*/) {}
    /// What cannot be taken back, before anything is touched, and what went wrong later: sentences.
    virtual void Problem(const std::string&) {}
    /// What somebody else has done meanwhile, which keeps nothing from being taken back: sentences.
    virtual void Remark(const std::string&) {}
    /// How many acts of how many were looked at, or taken back. As often as one likes.
    virtual void Progress(std::string_view /*what*/, std::size_t /*done*/, std::size_t /*all*/) {}
    /// What is done, or would be, with the file of this path.
    virtual void Step(UndoStep::Kind, const std::string& /*path*/) {}
};

struct UndoResult {
    ExitClass exit = ExitClass::Broken;
    std::string message = {};  ///< why it did not start or stopped, or that there was nothing to do
    std::string run = {};
    std::array<int, 5> counts{};  ///< by UndoStep::Kind; of files that are as they were before, Nothing
    std::string leftOver =
        {};  ///< a folder of originals of which this run, or part of a run, needs none; empty: there is none
    int problems = 0;  ///< what stays otherwise than before the run

    int Count(UndoStep::Kind kind) const { return counts[static_cast<std::size_t>(kind)]; }
};

/// Looks at everything first and touches nothing when something cannot be taken back, unless that is asked for.
/// Results are removed and replaced only as long as they are what the run has written. Can be interrupted and given
/// again; given twice it does nothing. Interrupts are counted (platform/ThisProcess.h).
[[nodiscard]] UndoResult UndoRun(const UndoOptions& options, CUndoObserver& observer);

/// For a run that somebody wants to go on with: a sentence when it is taken back, wholly or in part; else empty.
[[nodiscard]] std::string UndoneSentence(const std::string& run);
