#include "engine/OutputSettings.h"
#include "engine/PathEntry.h"
#include "engine/SaveStepRedirection.h"
#include "hostcalls/Conversions.h"
#include "jobs/SequenceChecks.h"
#include "platform/Files.h"

#include <algorithm>

namespace {

constexpr char kDestination[] = "DocSaveDestType";
constexpr char kFolder[] = "PreselectedFolderPath";

/// Moves and deletes: after them the input is not where it was.
bool TakesInputAway(int finalAction)
{
    return finalAction == 2 || finalAction == 3 || finalAction == 6 || finalAction == 7;
}

bool HasConverter(const std::string& id)
{
    if (id == "com.adobe.acrobat.pdf") return true;
    const auto converters = EnumerateFromPdf();
    return std::any_of(converters.begin(), converters.end(), [&](const auto& one) { return one.uniqueId == id; });
}

/// What counts alike for the engine's own save and for a save step.
void CheckNames(const OutputSettings& settings, CSequenceFindings& findings)
{
    for (const std::string& affix : {settings.insertBefore, settings.insertAfter})
        if (affix.find_first_of("/\\") != std::string::npos)
            findings.Error("affix-leaves-folder",
                           "The addition \"" + affix + "\" to the file name holds a separator of folders.");
    if (settings.handlerId && !HasConverter(*settings.handlerId))
        findings.Error("converter-not-available", "The result is to be written by the converter " +
                                                      *settings.handlerId + ", which this host does not have.");
}

bool ReplacesInput(const OutputSettings& settings)
{
    return !settings.dontOverwrite && settings.insertBefore.empty() && settings.insertAfter.empty() &&
           !settings.handlerId;
}

void SayInPlace(CSequenceFindings& findings)
{
    findings.Warning("save-in-place",
                     "The results replace the input files; give the run an output folder if that is not meant.");
}

void CheckStepsTarget(CCabView parameters, const OutputSettings& settings, const RunSurroundings& run,
                      CSequenceFindings& findings)
{
    if (!parameters.Known(kDestination)) {
        findings.Warning("save-without-target",
                         "The step does not say where to save, so it saves over the input files; an output folder of "
                         "the run does not change that.");
        return;
    }
    if (run.hasOutputFolder) return;
    if (const auto folder = PathEntry(parameters, kFolder)) {
        findings.Warning("save-folder-unused",
                         "A run without an output folder of its own saves beside the input and "
                         "not in the folder " +
                             *folder + ".");
    }
    if (ReplacesInput(settings)) return SayInPlace(findings);
    findings.Note("saves-beside-input", "Without an output folder of the run the results lie beside their inputs.");
}

void CheckExtras(CCabView parameters, CSequenceFindings& findings)
{
    if (parameters.Bool("RunPDFOptimizer", false))
        findings.Warning("preset-outside", "The step optimizes with the preset \"" +
                                               parameters.StringOrText("PresetName").value_or("") +
                                               "\", which is not in the file; a host without it leaves that out.");
    if (parameters.Bool("EmbedIndex", false))
        findings.Warning("index-not-embedded",
                         "Not every host can embed a search index; one that cannot leaves it out.");
    if (parameters.Bool("NumbericNaming", false))
        findings.Warning("numbers-not-given", "Not every host can number the files; one that cannot leaves it out.");
}

void CheckSaveStep(const SequenceStep& step, const RunSurroundings& run, CSequenceFindings& findings)
{
    findings.About(&step);
    const OutputSettings settings = OutputSettings::Read(step.parameters);
    CheckStepsTarget(step.parameters, settings, run, findings);
    CheckNames(settings, findings);
    CheckExtras(step.parameters, findings);
    findings.About(nullptr);
}

void CheckEngineFolder(const OutputSettings& settings, const RunSurroundings& run, CSequenceFindings& findings)
{
    if (settings.kind == kOutputInputFolder) {
        if (ReplacesInput(settings)) SayInPlace(findings);
        return;
    }
    if (run.hasOutputFolder) return;
    if (settings.kind == kOutputAskUser)
        return findings.Warning("asks-for-output", "The sequence asks where to save; give the run an output folder.");
    if (!settings.selectedFolder) {
        findings.Error("no-output-folder", "The sequence saves in a folder but names none; give the run one.");
    } else if (!platform::FolderExists(*settings.selectedFolder)) {
        findings.Error("output-folder-missing", "The output folder " + *settings.selectedFolder +
                                                    " does not exist; create it, or give the run another one.");
    }
}

void CheckEngineSave(const OutputSettings& settings, const RunSurroundings& run, CSequenceFindings& findings)
{
    if (settings.kind < kOutputInputFolder || settings.kind > kOutputNone)
        return findings.Error("unknown-output", "There is no output kind " + std::to_string(settings.kind) + ".");
    CheckEngineFolder(settings, run, findings);
    CheckNames(settings, findings);
    if (settings.runPdfOptimizer)
        findings.Warning("preset-outside", "A run does not apply the optimizer that the output settings ask for.");
}

void CheckNothingSaved(const RunSurroundings& run, CSequenceFindings& findings)
{
    if (TakesInputAway(run.finalAction))
        return findings.Error("saves-nothing",
                              "The sequence saves nothing, and the final action takes the input away.");
    findings.Warning("saves-nothing", "The sequence saves nothing: add a save step if its changes are to be kept.");
}

void CheckAfterLastSave(const std::vector<SequenceStep>& steps, int lastSave, CSequenceFindings& findings)
{
    for (const SequenceStep& step : steps) {
        if (step.number <= lastSave) continue;
        findings.About(&step);
        findings.Warning("step-after-save",
                         "The step comes after the last save: what it changes in the document is not kept.");
    }
    findings.About(nullptr);
}

}  // namespace

void CheckSaving(const SequenceSource& source, const std::vector<SequenceStep>& steps, const RunSurroundings& run,
                 CSequenceFindings& findings)
{
    const OutputSettings output = OutputSettings::Read(source.sequence.Output());
    const bool engineSaves = output.kind != kOutputNone;
    int saveSteps = 0, lastSave = 0;
    for (const SequenceStep& step : steps) {
        if (!IsSaveStep(step.handler)) continue;
        ++saveSteps;
        lastSave = step.number;
        CheckSaveStep(step, run, findings);
    }
    if (engineSaves) CheckEngineSave(output, run, findings);
    if (saveSteps + (engineSaves ? 1 : 0) > 1)
        findings.Note("saves-more-than-once", "The sequence saves each document more than once.");
    if (engineSaves) return;
    if (saveSteps == 0) return CheckNothingSaved(run, findings);
    CheckAfterLastSave(steps, lastSave, findings);
}
