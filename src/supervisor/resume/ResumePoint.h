// Decides from what is on disk how far a file got whose worker is gone.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "supervisor/RunObserver.h"
#include "supervisor/journal/Journal.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/journal/Manifest.h"

enum class Left {
    Everything,   ///< the file is as it was, and nothing was written for it that has to stay
    FinalAction,  ///< its results are written
    Nothing,      ///< all is done
    Unknowable    ///< going on could do something twice
};

struct ResumePoint {
    Left left = Left::Everything;
    /// What is known by now: outcome, results, hash of the input, final action and, for Unknowable, the message.
    /// Number, path and size are those of the plan.
    FileRecord record = {};
    /// Results of an unfinished file, to be removed before everything is done once more.
    std::vector<std::string> takeBack = {};
};

struct ResumeRules {
    bool hasFinalAction = false;
    int outputsPerFile = 1;  ///< results that the run writes for a file
    /// Complete results of a file are made once more rather than believed, where that leaves no trace: only the
    /// worker that is gone knew whether all steps had done their part.
    bool redoResults = false;
    /// Processing a file gives it another name: the results are moves of the file itself, and of others that make
    /// room.
    bool movesInputs = false;
};

/// Touches nothing but the rest of an interrupted move: the source, once the target is complete. Compares contents by
/// hash. `results`: the outcome that says that the results were complete before the intents, if there is one.
[[nodiscard]] ResumePoint FindResumePoint(const PlannedFile& file, const std::vector<Intent>& intents,
                                          const std::optional<FileRecord>& results, const ResumeRules& rules);

/// What the supervisor has to know of a run.
struct RunFacts {
    ResumeRules rules = {};
    bool reports = false;                   ///< what is found in the files is reported
    bool inputLeaves = false;               ///< the final action moves, renames or deletes it
    std::vector<std::string> folders = {};  ///< of results, copies and final actions, as far as the job names them
};

[[nodiscard]] RunFacts ReadRunFacts(const ManifestHeader& manifest);
