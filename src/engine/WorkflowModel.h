// A workflow as its XML form states it, before it becomes a sequence.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

struct WorkflowItems;

/// Text of an item, as UTF-8, kept apart by what it becomes.
struct WorkflowText {
    std::string utf8;
};
struct WorkflowString {
    std::string bytes;
};
struct WorkflowAtom {
    std::string name;
};
struct WorkflowBinary {
    std::string bytes;
};
struct WorkflowNull {};

using WorkflowValue = std::variant<WorkflowNull, bool, std::int32_t, double, WorkflowText, WorkflowString,
                                   WorkflowAtom, WorkflowBinary, WorkflowItems>;

/// The parameters of one level: unique names, in the order in which each name was first met.
struct WorkflowItems {
    std::vector<std::pair<std::string, WorkflowValue>> entries;
};

struct WorkflowSource {
    std::string path;  // UTF-8
    bool isFolder = false;
};

struct WorkflowCommand {
    std::string handlerName;  // without white space at its end
    std::string label;        // that of its group
    WorkflowItems parameters;
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
