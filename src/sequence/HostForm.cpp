#include "sequence/HostForm.h"

#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"
#include "sequence/XmlForm.h"

#include <set>

namespace {

WorkflowItems ItemsFromCab(CCabView cab);

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

WorkflowItems ItemsFromCab(CCabView cab)
{
    WorkflowItems items;
    for (const std::string& key : cab.Keys())
        if (auto value = ValueFromCab(cab, key.c_str())) items.entries.emplace_back(key, std::move(*value));
    return items;
}

std::string TextUtf8Or(CCabView cab, const char* key, const std::string& fallback)
{
    if (const auto text = cab.TextUtf8(key)) return *text;
    return cab.String(key).value_or(fallback);
}

WorkflowCommand CommandFromEntry(CCabView entry)
{
    WorkflowCommand command;
    const auto atom = entry.Atom("HandlerName");
    command.handlerName = atom ? AtomText(*atom) : entry.StringOrText("HandlerName").value_or("");
    command.label = TextUtf8Or(entry, "Title", command.handlerName);
    command.parameters = ItemsFromCab(entry.Cab("Params"));
    return command;
}

std::string DIPathOf(CCabView pathCab)
{
    for (const char* key : {"DIText", "DI", "DIPath"})
        if (std::string path = TextUtf8Or(pathCab, key, ""); !path.empty()) return path;
    return {};
}

/// Of a path cab, or of a text that is the path itself.
std::string DIPathUnder(CCabView cab, const char* key)
{
    const CCabView pathCab = cab.Cab(key);
    return pathCab ? DIPathOf(pathCab) : TextUtf8Or(cab, key, "");
}

std::vector<WorkflowSource> SourcesFromInput(CCabView input)
{
    std::vector<WorkflowSource> sources;
    const int kind = input.Int("FileVariation", -1);
    if (kind != kInputFiles && kind != kInputFolder) return sources;
    const bool isFolder = kind == kInputFolder;
    if (std::string folder = DIPathUnder(input, "PreselectedFolderPath"); isFolder && !folder.empty())
        sources.push_back({std::move(folder), true});
    const CCabView paths = input.Cab("PreselectedFilesPaths");
    for (const std::string& key : paths.Keys())
        if (std::string path = DIPathUnder(paths, key.c_str()); !path.empty())
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

std::optional<WorkflowCommand> SaveStepFromOutput(CCabView output)
{
    const int kind = output.Int("FileVariation", kOutputFolder);
    const char* const destination = kind == kOutputInputFolder ? "WorkflowPlaybackSave"
                                    : kind == kOutputAskUser   ? "WorkflowPlaybackSaveAs"
                                    : kind == kOutputFolder    ? "WorkflowPlaybackSaveInAFolder"
                                                               : nullptr;
    if (!destination) return std::nullopt;
    WorkflowCommand command{"WorkflowPlaybackSaveFiles", "Save", {}, "", ""};
    auto& entries = command.parameters.entries;
    for (auto& entry : ItemsFromCab(output).entries)
        if (entry.first != "DocSaveDestType" && entry.first != "PreselectedFolderPath")
            entries.push_back(std::move(entry));
    entries.emplace_back("DocSaveDestType", WorkflowString{destination});
    if (std::string folder = DIPathUnder(output, "PreselectedFolderPath"); !folder.empty())
        entries.emplace_back("PreselectedFolderPath", WorkflowText{folder.ends_with('/') ? folder : folder + '/'});
    return command;
}

std::vector<std::string> CabDifferences(CCabView one, CCabView other)
{
    std::vector<std::string> differences;
    AddDifferences(one, other, "", differences);
    return differences;
}

namespace {

constexpr int kOutputSavesItself = 3;

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
    CCab input;
    if (workflow.sources.empty()) {
        input.PutInt("FileVariation", kInputAskUser);
        return input;
    }
    input.PutInt("FileVariation", workflow.sources.front().isFolder ? kInputFolder : kInputFiles);
    CCab paths;
    int number = 0;
    for (const WorkflowSource& source : workflow.sources)
        paths.PutCab(CabKey(number++).c_str(), PathCab(source.path));
    input.PutCab("PreselectedFilesPaths", std::move(paths));
    return input;
}

}  // namespace

CCab CabFromCommand(const WorkflowCommand& command)
{
    CCab cab;
    cab.PutCab("Params", CabFromItems(command.parameters));
    cab.PutAtom("HandlerName", Atom(command.handlerName));
    cab.PutTextUtf8("Title", command.label);
    cab.PutInt("UIPolicy", kAVCommandUISilent);
    cab.PutCab("Config", CCab());
    return cab;
}

CCab CabFromWorkflow(const Workflow& workflow)
{
    CCab sequence = CabWithoutCommands(workflow);
    sequence.PutCab("Commands", CommandsCab(workflow));
    return sequence;
}

CCab CabWithoutCommands(const Workflow& workflow)
{
    CCab output;
    output.PutInt("FileVariation", kOutputSavesItself);
    CCab sequence;
    sequence.PutCab("Commands", CCab());
    sequence.PutCab("Input", InputCab(workflow));
    sequence.PutCab("Output", std::move(output));
    return sequence;
}
