// What an interrupted run has left on disk.
#pragma once

#include <set>
#include <string>

#include "supervisor/RunObserver.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/resume/ResumePoint.h"

/// Removes the regular files in these folders, not below them, whose names begin with `prefix`; answers how many.
int RemoveTemporaries(const std::set<std::string>& folders, const std::string& prefix);

/// Removes the unfinished files of the run from every folder that it may have written to.
void RemoveUnfinishedFiles(const std::string& manifestPath, const RunFacts& facts, const CJournalIndex& journal,
                           const std::string& temporaryTag);

/// Gives up a run that is not finished, so that another one may begin: moves that were interrupted are completed,
/// unfinished files removed. Warns when there was something to give up. Nothing happens when there is no such run.
void GiveUpRun(const std::string& manifestPath, const std::string& journalPath, CRunObserver& observer);
