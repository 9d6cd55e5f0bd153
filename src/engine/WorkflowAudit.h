// What the XML form of a sequence says beside what its reader takes in.
#pragma once

#include "engine/GuardedXml.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct WorkflowRemark {
    enum class Severity {
        Error,    // a run cannot do what the text says
        Warning,  // something is passed over that may have been meant
        Note      // something is passed over that has no effect on documents
    };
    Severity severity;
    std::string code;  // for programs
    std::string text;  // one sentence; holds names, never values
    int step = 0;      // from 1; 0 = no step in particular
    TextPlace place;
};

struct WorkflowAudit {
    /// Set when the text is no workflow at all: then it holds one remark and nothing else.
    bool isWorkflow = true;
    std::vector<WorkflowRemark> remarks;  // in the order of the text
    std::vector<TextPlace> steps;         // of each command that the reader takes, in order
};

/// Looks over the text of a workflow. Finds exactly the commands that ParseWorkflow finds.
[[nodiscard]] WorkflowAudit AuditWorkflow(std::string_view bytes);
