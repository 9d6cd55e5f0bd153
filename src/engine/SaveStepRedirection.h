// Sends the host's own save step into a folder.
#pragma once

#include "hostcalls/Commands.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"

#include <optional>
#include <string>

class CLogWriter;
struct ExecutorSettings;

/// Where results go in place of what the sequence says; nothing when nothing was given or it is no folder and the run
/// does not insist on it. With a separator at its end.
[[nodiscard]] std::optional<std::string> AlternativeOutputFolder(const ExecutorSettings& settings);

/// The alternative output folder, otherwise the input's folder; with a separator at its end.
[[nodiscard]] std::string RedirectionFolder(const std::string& inputPath, const ExecutorSettings& settings);

/// Changes the parameters of a save step, when they say where to save. Answers what went wrong; empty when nothing
/// did. Throws CHostException.
[[nodiscard]] std::string RedirectSaveStep(CHostCommand& command, const std::string& folder, CLogWriter& log);

/// The same in the output part of a sequence. Throws CHostException.
void RedirectOutput(CSequence& sequence, const std::string& folder, CLogWriter& log);

/// Whether the step, which has these parameters by now, may write over the input file. `documentFile` is the file
/// behind the document at this moment.
[[nodiscard]] bool MayReplaceInput(const SaveStepFacts& save, const std::string& documentFile,
                                   const std::string& inputPath);
