#include "jobs/SequenceForms.h"

#include "engine/InputKinds.h"
#include "engine/OutputSettings.h"
#include "engine/WorkflowWriter.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"

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
