#include "sequence/SequenceFacts.h"

#include "hostcalls/Commands.h"
#include "sequence/StepKinds.h"

#include <algorithm>

namespace {

StepFacts ReadStep(CCabView entry)
{
    StepFacts step;
    step.handler = HandlerNameOf(entry).value_or("");
    const auto handler = AvailableHandler(step.handler);
    step.available = handler.has_value();
    if (handler) step.handler = *handler;
    step.sequenceCallbacks = handler && HasSequenceCallbacks(*handler);
    const CCabView params = entry.Cab("Params");
    if (IsSaveStep(step.handler)) step.save = SaveStepFacts::Read(params);
    if (IsScriptStep(step.handler)) step.script = params.TextUtf8("ScriptCode").value_or("");
    return step;
}

}  // namespace

SequenceFacts ReadSequenceFacts(const CSequence& sequence, int hostMajor)
{
    SequenceFacts facts;
    facts.hostMajor = hostMajor;
    facts.inputKind = sequence.Input().Int("FileVariation", -1);
    const CCabView commands = sequence.Commands();
    for (int index = 0; index < commands.Size(); ++index)
        facts.steps.push_back(ReadStep(commands.Cab(CabKey(index).c_str())));
    facts.output = OutputSettings::Read(sequence.Output());
    facts.outputNamesDestination = sequence.Output().Known(kSaveDestinationKey);
    return facts;
}

bool SavesSomething(const SequenceFacts& facts) { return ResultsPerFile(facts) > 0; }

int ResultsPerFile(const SequenceFacts& facts)
{
    const auto steps = std::count_if(facts.steps.begin(), facts.steps.end(),
                                     [](const StepFacts& step) { return step.save && step.available; });
    return static_cast<int>(steps) + (facts.output.kind != kOutputNone ? 1 : 0);
}
