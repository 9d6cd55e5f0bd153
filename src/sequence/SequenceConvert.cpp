#include "sequence/SequenceConvert.h"

#include <utility>

#include "base/Text.h"
#include "sequence/HostForm.h"
#include "sequence/Keys.h"
#include "sequence/OutputSettings.h"
#include "sequence/XmlForm.h"

namespace {

/// What the reader takes in but the host's form does not.
void NameUnkeptWords(const SequenceSource& source, CSequenceFindings& losses)
{
    const Workflow& workflow = *source.workflow;
    if (!workflow.title.empty()) losses.Warning("title-lost", "The title \"" + workflow.title + "\" has no place.");
    if (!workflow.description.empty()) losses.Warning("description-lost", "The description has no place.");
    for (std::size_t at = 1; at < workflow.groups.size(); ++at)
        if (workflow.groups[at].label == workflow.groups[at - 1].label)
            losses.Note("groups-merged",
                        "Two neighbouring groups \"" + workflow.groups[at].label + "\" can no longer be told apart.");
    ForEachStep(source, [&](const SequenceStep& step) {
        losses.About(&step);
        if (step.prompts) losses.Warning("prompts-lost", "That the step asks for its settings has no place.");
        if (step.pauses) losses.Warning("pauses-lost", "That the sequence pauses before the step has no place.");
        losses.About(nullptr);
        return true;
    });
}

Expected<ConvertedSequence> ToHostForm(const SequenceSource& source, const std::string& target)
{
    CSequenceFindings losses;
    for (const SequenceFinding& remark : source.audit.remarks) losses.Add(remark);
    NameUnkeptWords(source, losses);
    auto bytes = HostFormOf(SequenceFromWorkflow(*source.workflow).Whole(), target);
    if (!bytes) return Failure(bytes.Error());
    return ConvertedSequence{std::move(*bytes), losses.All()};
}

void NameOutputChange(const OutputSettings& output, CSequenceFindings& losses)
{
    if (output.kind == kOutputFolder) {
        losses.Error("output-folder", "The sequence saves in the folder " +
                                          output.selectedFolder.value_or("of the run") +
                                          ". The save step of the new one names it, too, but a run saves beside the "
                                          "input unless it is given an output folder.");
    } else if (output.kind == kOutputAskUser) {
        losses.Warning("asks-for-output",
                       "The sequence asks where to save. The save step of the new one saves beside "
                       "the input unless the run is given an output folder.");
    } else if (output.dontOverwrite && output.insertBefore.empty() && output.insertAfter.empty()) {
        losses.Warning("save-in-place",
                       "The sequence saves beside the input under a free name. A program that shows "
                       "windows may save over the input by the save step of the new one.");
    }
    if (output.handlerId && output.dontOverwrite)
        losses.Warning("overwrites",
                       "The sequence replaces results of earlier runs in another format; the new one "
                       "chooses free names.");
    losses.Note("output-became-step", "The output settings have become a save step at the end.");
}

/// Adds what the output settings do as a step, or says why not.
void AddSaveStep(CCabView output, Workflow& workflow, CSequenceFindings& losses)
{
    const OutputSettings settings = OutputSettings::Read(output);
    if (settings.kind == kOutputNone) return;
    auto step = SaveStepFromOutput(output);
    if (!step)
        return losses.Error("output-lost", "There is no output kind " + std::to_string(settings.kind) +
                                               ", so the new sequence would save nothing.");
    NameOutputChange(settings, losses);
    workflow.groups.push_back({step->label, {std::move(*step)}});
}

bool IsUnder(const std::string& key, const std::string& part) { return key == part || key.starts_with(part + ':'); }

bool IsUnder(const std::string& key, const std::string& part, const char* inner)
{
    return IsUnder(key, part + ':' + inner);
}

/// The part of a command's entry that a key is in: "Params", "Title" ...; empty when it is in none.
std::string CommandPart(const std::string& key)
{
    const auto steps = Split(key, ":");
    return steps.size() > 2 && steps[0] == kCommandsKey ? steps[2] : std::string();
}

/// One entry that is not the same after the way to XML and back.
void NameDifference(const std::string& key, CSequenceFindings& losses)
{
    const std::string text = "The entry \"" + key + "\" has no place in XML.", part = CommandPart(key);
    if (part == kTitleKey) {
        losses.Note("title-made", "The entry \"" + key + "\" becomes the label of a group.");
    } else if (part == kHandlerNameKey) {
        losses.Warning("handler-name", "The entry \"" + key + "\" is kept in another way.");
    } else if (part == kUIPolicyKey || part == kConfigKey) {
        losses.Warning("windows-lost", text + " The step shows no windows.");
    } else {
        losses.Error("value-lost", text);
    }
}

/// Compares what was with what a reader of the new text gets. `saveStep`: the number of the step that was added, from
/// 0; -1 for none.
void NameDifferences(CCabView before, CSequence after, int saveStep, CSequenceFindings& losses)
{
    if (saveStep >= 0) after.EditCommands().Remove(CabKey(saveStep).c_str());
    bool sourceChanged = false;
    for (const std::string& key : CabDifferences(before, after.Whole())) {
        if (saveStep >= 0 && IsUnder(key, kOutputKey)) continue;  // named as a whole
        if (IsUnder(key, kInputKey, kFolderKey) || IsUnder(key, kInputKey, kFilesKey)) {
            sourceChanged = true;
        } else {
            NameDifference(key, losses);
        }
    }
    if (sourceChanged)
        losses.Warning("source-changed", "The sources are kept in another way; give the run its input.");
}

Expected<ConvertedSequence> ToXml(const SequenceSource& source, const ConversionRequest& request)
{
    if (!source.sequence.IsComplete() || source.sequence.Commands().Size() == 0)
        return Failure("it lacks commands, or one of the parts \"Commands\", \"Input\" and \"Output\".");
    CSequenceFindings losses;
    Workflow workflow = WorkflowFromSequence(source.sequence);
    workflow.title = request.title.empty() ? TitleFromPath(source.path) : request.title;
    workflow.description = request.description;
    const int count = source.sequence.Commands().Size();
    const std::size_t groups = workflow.groups.size();
    AddSaveStep(source.sequence.Output(), workflow, losses);
    auto xml = WriteWorkflow(workflow);
    if (!xml) return Failure(xml.Error());
    const auto again = ParseWorkflow(*xml);
    if (!again) return Failure("the new text cannot be read: " + again.Error());
    NameDifferences(source.sequence.Whole(), SequenceFromWorkflow(*again),
                    workflow.groups.size() > groups ? count : -1, losses);
    return ConvertedSequence{std::move(*xml), losses.All()};
}

}  // namespace

Expected<ConvertedSequence> ConvertSequence(const SequenceSource& source, const ConversionRequest& request)
{
    if (source.form == request.to)
        return Failure(std::string("it has the form \"") + FormWord(request.to) + "\" already; copy it instead.");
    return request.to == SequenceForm::Xml ? ToXml(source, request) : ToHostForm(source, request.target);
}
