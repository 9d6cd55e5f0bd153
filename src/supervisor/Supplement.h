// Takes files into a plan that it had to leave out.
#pragma once

#include "supervisor/RunObserver.h"
#include "supervisor/RunOptions.h"
#include "supervisor/Worker.h"

#include <string>

/// When the plan could not read some folders, plans once more and adds what is new behind the files that the manifest
/// has: neither those nor results of the run count as new. Fails: the manifest stays as it is, with a warning.
void AddLeftOutFiles(const CWorkerStarter& starter, const RunDescription& request, const std::string& manifestPath,
                     const std::string& journalPath, int interruptsSeen, CRunObserver& observer);
