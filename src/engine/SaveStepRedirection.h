// Sends the host's own save step into a folder.
#pragma once

#include "engine/Sequence.h"
#include "hostcalls/Commands.h"

#include <string>

class CLogWriter;

/// The first major version of the host whose sequences save by a step of their own.
inline constexpr int kFirstMajorWithSaveStep = 11;

[[nodiscard]] bool IsSaveStep(const std::string& handlerName);

/// The alternative output path when that is a folder, otherwise the input's folder; with a separator at its end.
[[nodiscard]] std::string RedirectionFolder(const std::string& inputPath, const std::string& alternativeOutputPath);

/// Changes the parameters of a save step, when they say where to save. Answers what went wrong; empty when nothing
/// did. Throws CHostException.
[[nodiscard]] std::string RedirectSaveStep(CHostCommand& command, const std::string& folder, CLogWriter& log);

/// The same in the output part of a sequence. Throws CHostException.
void RedirectOutput(CSequence& sequence, const std::string& folder, CLogWriter& log);
