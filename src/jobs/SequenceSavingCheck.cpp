#include "sequence/StepKinds.h"
#include "hostcalls/Conversions.h"
#include "jobs/SequenceChecks.h"
#include "platform/Files.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"

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

}  // namespace

void CSavingCheck::Look(const SequenceStep& step)
{
    if (IsSaveStep(step.handler)) {
        ++m_saveSteps;
        m_afterSave.clear();
        CheckSaveStep(step);
    } else if (m_saveSteps > 0) {
        m_afterSave.push_back({step.number, step.place});
    }
}

void CSavingCheck::CheckSaveStep(const SequenceStep& step)
{
    m_findings.About(&step);
    const OutputSettings settings = OutputSettings::Read(step.parameters);
    CheckStepsTarget(step.parameters, settings, m_run, m_findings);
    CheckNames(settings, m_findings);
    CheckExtras(step.parameters, m_findings);
    m_findings.About(nullptr);
}

void CSavingCheck::CheckAfterLastSave()
{
    for (const auto& [number, place] : m_afterSave)
        m_findings.Add({SequenceFinding::Severity::Warning, "step-after-save",
                        "The step comes after the last save: what it changes in the document is not kept.", number,
                        place});
}

void CSavingCheck::Finish(const OutputSettings& output)
{
    const bool engineSaves = output.kind != kOutputNone;
    if (engineSaves) CheckEngineSave(output, m_run, m_findings);
    if (m_saveSteps + (engineSaves ? 1 : 0) > 1)
        m_findings.Note("saves-more-than-once", "The sequence saves each document more than once.");
    if (engineSaves) return;
    if (m_saveSteps == 0) return CheckNothingSaved(m_run, m_findings);
    CheckAfterLastSave();
}
