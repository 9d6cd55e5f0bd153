// What the XML form of a sequence says beside what its reader takes in.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sequence/Findings.h"

struct WorkflowAudit {
    /// Set when the text is no workflow at all: then it holds one remark and nothing else.
    bool isWorkflow = true;
    std::vector<SequenceFinding> remarks;  // in the order of the text
    std::vector<TextPlace> steps;          // of each command that the reader takes, in order
};

/// Looks over the text of a workflow. Finds exactly the commands that ParseWorkflow finds.
[[nodiscard]] WorkflowAudit AuditWorkflow(std::string_view bytes);
