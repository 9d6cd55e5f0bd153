#include "sequence/SequenceFacts.h"

#include <algorithm>

#include "hostcalls/Commands.h"

namespace {

StepFacts ReadStep(CCabView entry)
{
    const StepEntry read = StepEntry::Read(entry);
    StepFacts step;
    step.handler = read.handler.value_or("");
    const auto handler = AvailableHandler(step.handler);
    step.available = handler.has_value();
    if (handler) step.handler = *handler;
    step.sequenceCallbacks = handler && HasSequenceCallbacks(*handler);
    const StepDescription& description = DescribeStep(step.handler);
    step.maker = description.maker;
    step.shared = description.shared;
    step.protects = description.protects;
    if (description.saves) step.save = SaveStepFacts::Read(read.parameters);
    if (description.script) step.script = read.parameters.TextUtf8(description.script).value_or("");
    return step;
}

}  // namespace

SequenceFacts ReadSequenceFacts(const CSequence& sequence, int hostMajor)
{
    SequenceFacts facts;
    facts.hostMajor = hostMajor;
    facts.inputKind = sequence.Input().Kind();
    const CCabView commands = sequence.Commands();
    for (int index = 0; index < commands.Size(); ++index)
        facts.steps.push_back(ReadStep(commands.Cab(CabKey(index).c_str())));
    facts.output = OutputSettings::Read(sequence.Output());
    return facts;
}

int ResultsPerFile(const SequenceFacts& facts)
{
    const auto steps = std::count_if(facts.steps.begin(), facts.steps.end(),
                                     [](const StepFacts& step) { return step.save && step.available; });
    return static_cast<int>(steps) + (facts.output.kind != kOutputNone ? 1 : 0);
}
