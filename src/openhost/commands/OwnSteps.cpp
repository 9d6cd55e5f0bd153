#include <algorithm>

#include "openhost/commands/Commands.h"
#include "openhost/commands/Handlers.h"
#include "openhost/commands/Slots.h"
#include "openhost/commands/Step.h"
#include "openhost/core/Raise.h"

/// The host's own steps: a line for each, with the function that answers its description.
#define OWN_STEPS(STEP)   \
    STEP(SaveStep)        \
    STEP(SecurityStep)    \
    STEP(OpenInfoStep)    \
    STEP(GeneralInfoStep) \
    STEP(CropPagesStep)   \
    STEP(RotatePagesStep) \
    STEP(DeletePagesStep) \
    STEP(DeleteAllStep)   \
    STEP(JavaScriptStep)

namespace openhost {

#define DECLARE_STEP(function) const StepDescription& function();
OWN_STEPS(DECLARE_STEP)

namespace {

#define LIST_STEP(function) &function,
constexpr const StepDescription& (*kSteps[])() = {OWN_STEPS(LIST_STEP)};

const StepDescription& StepNamed(const std::string& name)
{
    for (const auto describe : kSteps)
        for (const char* const known : describe().names)
            if (name == known) return describe();
    Raise(genErrGeneral, "the host has no step named " + name);
}

AVCommandStatus WorkOfStep(AVCommand command)
{
    auto& commands = Part<CCommands>();
    const std::string name = AtomText(commands.At(command).name);
    return RunStep(StepNamed(name), name, commands.Document(command),
                   commands.Cab(command, kAVCommandKeyParams, false), commands.Cab(command, "Inputs", false));
}

/// Answers the properties asked for: all of them for an empty cab.
void PropsOfStep(AVCommand command, ASCab cab)
{
    const StepDescription& step = StepNamed(AtomText(Part<CCommands>().At(command).name));
    CCabinet& props = CabAt(cab);
    const bool all = props.NumEntries() == 0;
    const auto wanted = [&](const char* key) { return all || props.Known(key); };
    if (wanted(kAVCommandKeyCanBatch)) props.PutBool(kAVCommandKeyCanBatch, true);
    if (wanted(kAVCommandKeyCanShowDialog)) props.PutBool(kAVCommandKeyCanShowDialog, false);
    if (wanted(kAVCommandKeyCanDescribeParams)) props.PutBool(kAVCommandKeyCanDescribeParams, false);
    if (wanted(kAVCommandKeyGroupTitle)) props.PutText(kAVCommandKeyGroupTitle, step.group);
    if (wanted(kAVCommandKeyGenericTitle)) props.PutText(kAVCommandKeyGenericTitle, step.title);
    if (wanted(kAVCommandKeyTitle)) props.PutText(kAVCommandKeyTitle, step.title);
}

/// One record serves all steps; the command's name tells which it is.
AVCommandHandler StepHandler()
{
    static AVCommandHandlerRec record = [] {
        AVCommandHandlerRec made = {};
        made.size = sizeof(made);
        made.GetProps = &CSlot<&PropsOfStep>::Entry;
        made.Work = &CSlot<&WorkOfStep>::Entry;
        return made;
    }();
    return &record;
}

}  // namespace

void RegisterBuiltInCommands()
{
    for (const auto describe : kSteps)
        for (const char* const name : describe().names)
            Part<CCommandHandlers>().Register(AtomFromText(name), StepHandler());
}

}  // namespace openhost
