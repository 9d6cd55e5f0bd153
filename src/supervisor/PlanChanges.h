// Whether a run that is to be gone on with is still the one that was planned. See docs/runs.md.
#pragma once

#include "supervisor/Manifest.h"
#include "supervisor/RunOptions.h"

#include <string>

/// The sequence of a run's settings, as path; empty when there is none.
[[nodiscard]] std::string SequenceOf(const RunRequest& request);
/// What the plan has to keep of the request for a later comparison.
void NoteRequest(ManifestHeader& header, const RunRequest& request);

/// A sentence when the sequence has not the content that was planned with, or is gone; empty when all is well, and
/// when the plan does not know.
[[nodiscard]] std::string ChangedSequence(const ManifestHeader& header);
/// A sentence that names the options which differ and would make other results; empty when there is none. Permissions
/// may be given later, but not taken back.
[[nodiscard]] std::string ChangedOptions(const ManifestHeader& header, const RunRequest& request);
/// For a request without a plan in `ownFolder`: a sentence about an unfinished run of the same sequence and inputs in
/// the folders beside it, from which the request differs in an option; empty when there is none.
[[nodiscard]] std::string UnfinishedRelative(const std::string& ownFolder, const RunRequest& request);

/// What to do when a run cannot be gone on with.
inline constexpr char kStartAnew[] =
    "To start anew, give the command without --resume and --retry-failed: it takes the input files as they are then; "
    "results that are there already stay until the sequence itself replaces them.";
