// Whether a run that is to be gone on with is still the one that was planned. See docs/runs.md.
#pragma once

#include <string>

#include "supervisor/RunOptions.h"
#include "supervisor/journal/Manifest.h"

/// A sentence when a file of the work has not the content that was planned with, or is gone; empty when all is well,
/// and when the plan does not know.
[[nodiscard]] std::string ChangedWork(const ManifestHeader& header);
/// A sentence that names the options which differ and would make other results; empty when there is none. Permissions
/// may be given later, but not taken back.
[[nodiscard]] std::string ChangedOptions(const ManifestHeader& header, const RunDescription& request);
/// For a request without a plan in `ownFolder`: a sentence about an unfinished run of the same work and inputs in
/// the folders beside it, from which the request differs in an option; empty when there is none.
[[nodiscard]] std::string UnfinishedRelative(const std::string& ownFolder, const RunDescription& request);

/// What to do when a run cannot be gone on with.
inline constexpr char kStartAnew[] =
    "To start anew, give the command without --resume and --retry-failed: it takes the input files as they are then; "
    "results that are there already stay until the run itself replaces them.";
