#include "sequence/HostForm.h"

#include <set>

#include "hostcalls/Cab.h"
#include "sequence/Keys.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"
#include "sequence/XmlForm.h"

namespace {

WorkflowCommand CommandFromEntry(CCabView entry)
{
    const StepEntry step = StepEntry::Read(entry);
    WorkflowCommand command;
    command.handlerName = step.handler.value_or("");
    command.label = StepTitleUtf8(entry).value_or(command.handlerName);
    command.parameters = RecordFromCab(step.parameters);
    return command;
}

std::vector<WorkflowSource> SourcesFromInput(CSequenceInput input)
{
    std::vector<WorkflowSource> sources;
    const int kind = input.Kind();
    if (kind != kInputFiles && kind != kInputFolder) return sources;
    const bool isFolder = kind == kInputFolder;
    if (std::string folder = DIPathEntry(input, kFolderKey); isFolder && !folder.empty())
        sources.push_back({std::move(folder), true});
    const CCabView paths = input.Cab(kFilesKey);
    for (const std::string& key : paths.Keys())
        if (std::string path = DIPathEntry(paths, key.c_str()); !path.empty())
            sources.push_back({std::move(path), isFolder});
    return sources;
}

/// Of types that only the host knows nothing is the same.
bool SameEntry(CCabView one, CCabView other, const char* key)
{
    const auto value = ValueFromCab(one, key), otherValue = ValueFromCab(other, key);
    return value && otherValue && SameValue(*value, *otherValue);
}

struct InCabOrder {
    bool operator()(const std::string& one, const std::string& other) const { return ComesFirstInCab(one, other); }
};

void AddDifferences(CCabView one, CCabView other, const std::string& prefix, std::vector<std::string>& differences)
{
    std::set<std::string, InCabOrder> keys;
    for (const CCabView cab : {one, other})
        for (std::string& key : cab.Keys()) keys.insert(std::move(key));
    for (const std::string& key : keys) {
        const CCabView inOne = one.Cab(key.c_str()), inOther = other.Cab(key.c_str());
        if (inOne && inOther) {
            AddDifferences(inOne, inOther, prefix + key + ':', differences);
        } else if (!SameEntry(one, other, key.c_str())) {
            differences.push_back(prefix + key);
        }
    }
}

// ---- XML to the host's form

CCab CommandsCab(const Workflow& workflow)
{
    CCab commands;
    int number = 0;
    for (const WorkflowGroup& group : workflow.groups)
        for (const WorkflowCommand& command : group.commands)
            commands.PutCab(CabKey(number++).c_str(), CabFromCommand(command));
    return commands;
}

CCab InputCab(const Workflow& workflow)
{
    std::vector<std::string> paths;
    for (const WorkflowSource& source : workflow.sources) paths.push_back(source.path);
    return MakeInput(paths, !workflow.sources.empty() && workflow.sources.front().isFolder);
}

}  // namespace

Workflow WorkflowFromSequence(const CSequence& sequence)
{
    Workflow workflow;
    workflow.sources = SourcesFromInput(sequence.Input());
    const CCabView commands = sequence.Commands();
    const int count = commands.Size();
    for (int index = 0; index < count; ++index) {
        WorkflowCommand command = CommandFromEntry(commands.Cab(CabKey(index).c_str()));
        if (workflow.groups.empty() || workflow.groups.back().label != command.label)
            workflow.groups.push_back({command.label, {}});
        workflow.groups.back().commands.push_back(std::move(command));
    }
    return workflow;
}

std::vector<std::string> CabDifferences(CCabView one, CCabView other)
{
    std::vector<std::string> differences;
    AddDifferences(one, other, "", differences);
    return differences;
}

CCab CabFromCommand(const WorkflowCommand& command)
{
    return MakeStepEntry(command.handlerName, command.label, CabFromRecord(command.parameters));
}

CSequence SequenceFromWorkflow(const Workflow& workflow)
{
    return {CommandsCab(workflow), InputCab(workflow), MakeNoOutput()};
}

CSequence SequenceWithoutCommands(const Workflow& workflow) { return {CCab(), InputCab(workflow), MakeNoOutput()}; }
