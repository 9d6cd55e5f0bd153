// Reads the XML form of a sequence file.
#pragma once

#include "base/Expected.h"
#include "engine/WorkflowModel.h"

#include <string>
#include <string_view>

/// Parses the text of a workflow. Fails with a sentence for the log: the parser's own, or ours when the text is
/// empty, too large, nested too deeply, not a workflow, or holds no command.
[[nodiscard]] Expected<Workflow> ParseWorkflow(std::string_view bytes);

/// The same for a file; `path` in the narrow code page. Never blocks on anything but a regular file.
[[nodiscard]] Expected<Workflow> ReadWorkflowFile(const std::string& path);
