#include "common/Text.h"
#include "engine/OutputSettings.h"
#include "jobs/SequenceChecks.h"
#include "jobs/SequenceReport.h"

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
    const auto steps = StepsOf(source);
    if (steps.empty() && OutputSettings::Read(source.sequence.Output()).kind == kOutputNone)
        findings.Error("no-commands", "The sequence has no commands, and it saves nothing.");
    else if (steps.empty())
        findings.Warning("no-commands", "The sequence has no commands: it only saves the documents.");
    CheckInput(source, run, findings);
    CStepDefaults defaults;
    for (const SequenceStep& step : steps) CheckStep(step, defaults, findings);
    CheckSaving(source, steps, run, findings);
    if (HoldsPasswords(steps))
        findings.Note("holds-passwords",
                      "The file holds passwords, or texts that may be some: whoever can read it can read them.");
    return InStepOrder(findings.All());
}
