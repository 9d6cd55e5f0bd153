#include "sequence/SequenceChecks.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "hostapi/HostConstants.h"
#include "hostcalls/Conversions.h"
#include "platform/Files.h"
#include "sequence/OutputSettings.h"
#include "sequence/StepChecks.h"
#include "sequence/StepDescription.h"

namespace {

// ---- the input

void CheckThere(const std::string& path, CSequenceFindings& findings)
{
    if (!platform::NameExists(path))
        findings.Warning("source-missing", "The source " + path + " does not exist here.");
}

void CheckFiles(CSequenceInput input, CSequenceFindings& findings)
{
    const auto paths = input.Listed();
    if (paths.empty())
        findings.Error("no-source", "The sequence takes chosen files but names none; give the run its input.");
    for (const std::string& path : paths) CheckThere(path, findings);
}

void CheckFolder(CSequenceInput input, CSequenceFindings& findings)
{
    if (const auto folder = input.Folder()) return CheckThere(*folder, findings);
    const auto paths = input.Listed();
    if (paths.empty())
        return findings.Error("no-source", "The sequence takes a folder but names none; give the run its input.");
    findings.Warning("folder-source", "The sequence names the folder " + paths.front() +
                                          " as its source. A run that is started by the environment does not look "
                                          "there: set FERRULEALTPATH.");
    for (const std::string& path : paths) CheckThere(path, findings);
}

void CheckMixedSources(const Workflow& workflow, CSequenceFindings& findings)
{
    for (const WorkflowSource& source : workflow.sources)
        if (source.isFolder != workflow.sources.front().isFolder)
            return findings.Warning("mixed-sources",
                                    "Files and folders are mixed among the sources; the first one decides.");
}

/// What is wrong with where the sequence takes its input from.
void CheckInput(const SequenceSource& source, const CheckedRun& run, CSequenceFindings& findings)
{
    if (run.hasInput) return;
    if (source.workflow) CheckMixedSources(*source.workflow, findings);
    const CSequenceInput input = source.sequence.Input();
    switch (const int kind = input.Kind()) {
        case kInputFiles:
            return CheckFiles(input, findings);
        case kInputFolder:
            return CheckFolder(input, findings);
        case kInputAskUser:
            return findings.Note("no-source", "The sequence names no input; give it to the run.");
        default:
            findings.Error("unknown-input", "There is no input kind " + std::to_string(kind) +
                                                "; give the run its input, which takes its place.");
    }
}

// ---- the output

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

void SayInPlace(CSequenceFindings& findings)
{
    findings.Warning("save-in-place",
                     "The results replace the input files; give the run an output folder if that is not meant.");
}

void CheckStepsTarget(const OutputSettings& settings, const CheckedRun& run, CSequenceFindings& findings)
{
    if (!settings.namesDestination) {
        findings.Warning("save-without-target",
                         "The step does not say where to save, so it saves over the input files; an output folder of "
                         "the run does not change that.");
        return;
    }
    if (run.hasOutputFolder) return;
    if (settings.selectedFolder) {
        findings.Warning("save-folder-unused",
                         "A run without an output folder of its own saves beside the input and "
                         "not in the folder " +
                             *settings.selectedFolder + ".");
    }
    if (settings.ReplacesInput()) return SayInPlace(findings);
    findings.Note("saves-beside-input", "Without an output folder of the run the results lie beside their inputs.");
}

void CheckExtras(const OutputSettings& settings, CSequenceFindings& findings)
{
    if (settings.runPdfOptimizer)
        findings.Warning("preset-outside", "The step optimizes with the preset \"" + settings.optimizerPreset +
                                               "\", which is not in the file; a host without it leaves that out.");
    if (settings.embedIndex)
        findings.Warning("index-not-embedded",
                         "Not every host can embed a search index; one that cannot leaves it out.");
    if (settings.numberFiles)
        findings.Warning("numbers-not-given", "Not every host can number the files; one that cannot leaves it out.");
}

void CheckEngineFolder(const OutputSettings& settings, const CheckedRun& run, CSequenceFindings& findings)
{
    if (settings.kind == kOutputInputFolder) {
        if (settings.ReplacesInput()) SayInPlace(findings);
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

void CheckEngineSave(const OutputSettings& settings, const CheckedRun& run, CSequenceFindings& findings)
{
    if (settings.kind < kOutputInputFolder || settings.kind > kOutputNone)
        return findings.Error("unknown-output", "There is no output kind " + std::to_string(settings.kind) + ".");
    CheckEngineFolder(settings, run, findings);
    CheckNames(settings, findings);
    if (settings.runPdfOptimizer)
        findings.Warning("preset-outside", "A run does not apply the optimizer that the output settings ask for.");
}

void CheckNothingSaved(const CheckedRun& run, CSequenceFindings& findings)
{
    if (run.takesInputAway)
        return findings.Error("saves-nothing",
                              "The sequence saves nothing, and the final action takes the input away.");
    findings.Warning("saves-nothing", "The sequence saves nothing: add a save step if its changes are to be kept.");
}

/// Where results go, whether anything is overwritten or lost. Looks at one step after the other.
class CSavingCheck {
public:
    /// Both are borrowed.
    CSavingCheck(const CheckedRun& run, CSequenceFindings& findings) : m_run(run), m_findings(findings) {}

    void Look(const SequenceStep& step);
    /// `output`: the settings of the whole sequence.
    void Finish(const OutputSettings& output);

private:
    void CheckSaveStep(const SequenceStep& step);
    void CheckAfterLastSave();

    const CheckedRun& m_run;
    CSequenceFindings& m_findings;
    int m_saveSteps = 0;
    struct Later {
        int number;
        TextPlace place;
    };
    std::vector<Later> m_afterSave;  // the steps behind the last save step
};

void CSavingCheck::Look(const SequenceStep& step)
{
    if (DescribeStep(step.handler).saves) {
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
    CheckStepsTarget(settings, m_run, m_findings);
    CheckNames(settings, m_findings);
    CheckExtras(settings, m_findings);
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

/// Those of the whole sequence first, then step by step.
std::vector<SequenceFinding> InStepOrder(std::vector<SequenceFinding> findings)
{
    std::stable_sort(findings.begin(), findings.end(),
                     [](const SequenceFinding& a, const SequenceFinding& b) { return a.step < b.step; });
    return findings;
}

}  // namespace

std::vector<SequenceFinding> CheckSource(const SequenceSource& source, const CheckedRun& run)
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
        holdsPasswords = holdsPasswords || HoldsPassword(DescribeMeantStep(step.handler), step.parameters);
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
