// The XML form of a sequence: what it states, its reader and its writer.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "sequence/Values.h"

struct WorkflowSource {
    std::string path;  // UTF-8
    bool isFolder = false;
};

struct WorkflowCommand {
    std::string handlerName;  // without white space at its end
    std::string label;        // that of its group
    CSettingsRecord parameters;
    // As written. Kept: workflows never pause or prompt, whatever stands here.
    std::string pauseBefore, promptUser;
};

struct WorkflowGroup {
    std::string label;
    std::vector<WorkflowCommand> commands;  // never empty
};

struct Workflow {
    std::string title, description;
    std::vector<WorkflowSource> sources;
    std::vector<WorkflowGroup> groups;
};

/// Parses the text of a workflow. Fails with a sentence for the log: the parser's own, or ours when the text is
/// empty, too large, nested too deeply, not a workflow, or holds no command.
[[nodiscard]] Expected<Workflow> ParseWorkflow(std::string_view bytes);

/// The same for a file; `path` in the narrow code page. Never blocks on anything but a regular file.
[[nodiscard]] Expected<Workflow> ReadWorkflowFile(const std::string& path);

/// The text of a workflow in the layout that hosts give it: one tab a level, the items of a level in the order of a
/// cab, every line end inside a value as a reference. Reading the text gives the same workflow again.
///
/// Fails with a sentence that names the item when a value has no place in XML: bytes that are no UTF-8 text, control
/// characters, numbers that are none.
[[nodiscard]] Expected<std::string> WriteWorkflow(const Workflow& workflow);
