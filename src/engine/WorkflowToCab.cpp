#include "engine/WorkflowToCab.h"

#include "engine/InputKinds.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"

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
