#include "base/Text.h"
#include "jobs/SequenceChecks.h"
#include "sequence/OutputSettings.h"
#include "sequence/StepSecrets.h"

#include <algorithm>

RunSurroundings RunSurroundings::Read(const EnvironmentReader& settings)
{
    RunSurroundings run;
    run.hasInput = !CleanPath(settings("FERRULEALTPATH")).empty();
    run.hasOutputFolder = !CleanPath(settings("FERRULEALTOUTPUTPATH")).empty();
    run.finalAction = ParseDecimal(settings("FERRULEFINAL"));
    return run;
}

namespace {

/// Those of the whole sequence first, then step by step.
std::vector<SequenceFinding> InStepOrder(std::vector<SequenceFinding> findings)
{
    std::stable_sort(findings.begin(), findings.end(),
                     [](const SequenceFinding& a, const SequenceFinding& b) { return a.step < b.step; });
    return findings;
}

}  // namespace

std::vector<SequenceFinding> CheckSource(const SequenceSource& source, const RunSurroundings& run)
{
    CSequenceFindings findings;
    for (const SequenceFinding& remark : source.audit.remarks) findings.Add(remark);
    if (!source.sequence.IsComplete()) {
        findings.Error("incomplete", "It lacks one of the parts \"Commands\", \"Input\" and \"Output\".");
        return InStepOrder(findings.All());
    }
    CheckInput(source, run, findings);
    CStepDefaults defaults;
    CSavingCheck saving(run, findings);
    bool anyStep = false, holdsPasswords = false;
    ForEachStep(source, [&](const SequenceStep& step) {
        anyStep = true;
        holdsPasswords = holdsPasswords || HoldsPassword(step.handler, step.parameters);
        CheckStep(step, defaults, findings);
        saving.Look(step);
        return true;
    });
    const OutputSettings output = OutputSettings::Read(source.sequence.Output());
    if (!anyStep && output.kind == kOutputNone)
        findings.Error("no-commands", "The sequence has no commands, and it saves nothing.");
    else if (!anyStep)
        findings.Warning("no-commands", "The sequence has no commands: it only saves the documents.");
    saving.Finish(output);
    if (holdsPasswords)
        findings.Note("holds-passwords",
                      "The file holds passwords, or texts that may be some: whoever can read it can read them.");
    return InStepOrder(findings.All());
}
