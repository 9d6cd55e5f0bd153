#include "sequence/HostForm.h"

#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "sequence/Keys.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"
#include "sequence/XmlForm.h"

#include <set>

namespace {

/// Nothing for a type that XML does not have.
std::optional<WorkflowValue> ValueFromCab(CCabView cab, const char* key)
{
    switch (cab.Type(key)) {
        case kASValueBool:
            return cab.Bool(key, false);
        case kASValueInteger:
            return cab.Int(key, 0);
        case kASValueDouble:
            return cab.Double(key, 0);
        case kASValueAtom:
            return WorkflowAtom{AtomText(cab.Atom(key).value_or(kNullAtom))};
        case kASValueString:
            return WorkflowString{cab.String(key).value_or("")};
        case kASValueText:
            return WorkflowText{cab.TextUtf8(key).value_or("")};
        case kASValueBinary:
            return WorkflowBinary{cab.Binary(key).value_or("")};
        case kASValueNull:
            return WorkflowNull{};
        case kASValueCabinet:
            return ItemsFromCab(cab.Cab(key));
        default:
            return std::nullopt;
    }
}

WorkflowCommand CommandFromEntry(CCabView entry)
{
    const StepEntry step = StepEntry::Read(entry);
    WorkflowCommand command;
    command.handlerName = step.handler.value_or("");
    command.label = StepTitleUtf8(entry).value_or(command.handlerName);
    command.parameters = ItemsFromCab(step.parameters);
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

bool SameValue(CCabView one, CCabView other, const char* key)
{
    if (one.Type(key) != other.Type(key)) return false;
    switch (one.Type(key)) {
        case kASValueBool:
            return one.Bool(key, false) == other.Bool(key, false);
        case kASValueInteger:
            return one.Int(key, 0) == other.Int(key, 0);
        case kASValueDouble:
            return one.Double(key, 0) == other.Double(key, 0);
        case kASValueAtom:
            return one.Atom(key) == other.Atom(key);
        case kASValueString:
            return one.String(key) == other.String(key);
        case kASValueText:
            return one.TextUtf8(key) == other.TextUtf8(key);
        case kASValueBinary:
            return one.Binary(key) == other.Binary(key);
        case kASValueNull:
            return true;
        default:
            return false;
    }
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
        } else if (!SameValue(one, other, key.c_str())) {
            differences.push_back(prefix + key);
        }
    }
}

// ---- XML to the host's form

CCab CabFromItems(const WorkflowItems& items);

/// Puts one value under its key; one overload for each kind of value.
struct ValueWriter {
    CCabEditor cab;
    const char* key;

    void operator()(WorkflowNull) { cab.PutNull(key); }
    void operator()(bool value) { cab.PutBool(key, value); }
    void operator()(std::int32_t value) { cab.PutInt(key, value); }
    void operator()(double value) { cab.PutDouble(key, value); }
    void operator()(const WorkflowText& value) { cab.PutTextUtf8(key, value.utf8); }
    void operator()(const WorkflowString& value) { cab.PutString(key, value.bytes); }
    void operator()(const WorkflowAtom& value) { cab.PutAtom(key, Atom(value.name)); }
    void operator()(const WorkflowBinary& value) { cab.PutBinary(key, value.bytes); }
    void operator()(const WorkflowItems& value) { cab.PutCab(key, CabFromItems(value)); }
};

CCab CabFromItems(const WorkflowItems& items)
{
    CCab cab;
    for (const auto& [name, value] : items.entries) {
        const auto error = CatchHostError([&] { std::visit(ValueWriter{cab.Edit(), name.c_str()}, value); });
        // A step without one of its parameters would do something else than the sequence says.
        if (error) throw CHostException({error->code, "item \"" + name + "\": " + error->text});
    }
    return cab;
}

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

WorkflowItems ItemsFromCab(CCabView cab)
{
    WorkflowItems items;
    for (const std::string& key : cab.Keys())
        if (auto value = ValueFromCab(cab, key.c_str())) items.entries.emplace_back(key, std::move(*value));
    return items;
}

std::vector<std::string> CabDifferences(CCabView one, CCabView other)
{
    std::vector<std::string> differences;
    AddDifferences(one, other, "", differences);
    return differences;
}

CCab CabFromCommand(const WorkflowCommand& command)
{
    return MakeStepEntry(command.handlerName, command.label, CabFromItems(command.parameters));
}

CSequence SequenceFromWorkflow(const Workflow& workflow)
{
    return {CommandsCab(workflow), InputCab(workflow), MakeNoOutput()};
}

CSequence SequenceWithoutCommands(const Workflow& workflow) { return {CCab(), InputCab(workflow), MakeNoOutput()}; }
