#include "base/ByteText.h"
#include "base/Text.h"
#include "engine/OutputSettings.h"
#include "engine/PathEntry.h"
#include "engine/WorkflowToCab.h"
#include "engine/WorkflowWriter.h"
#include "engine/WorkflowXml.h"
#include "jobs/JobSettings.h"
#include "jobs/SequenceChecks.h"
#include "jobs/SequenceForms.h"
#include "jobs/SequenceJobs.h"
#include "jobs/SequenceReport.h"
#include "jobs/SequenceWriting.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;
using Severity = SequenceFinding::Severity;

/// The bytes of the other form and what it has no place for.
struct Converted {
    std::string bytes;
    CSequenceFindings losses;
};

// ---- XML to the host's form

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

Expected<Converted> ToHostForm(const SequenceSource& source, const std::string& target)
{
    Converted converted;
    for (const SequenceFinding& remark : source.audit.remarks) converted.losses.Add(remark);
    NameUnkeptWords(source, converted.losses);
    auto bytes = HostFormOf(CabFromWorkflow(*source.workflow).View(), target);
    if (!bytes) return Failure(bytes.Error());
    converted.bytes = std::move(*bytes);
    return converted;
}

// ---- the host's form to XML

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

bool IsUnder(const std::string& key, const char* part)
{
    return key == part || key.starts_with(std::string(part) + ':');
}

/// The part of a command's entry that a key is in: "Params", "Title" ...; empty when it is in none.
std::string CommandPart(const std::string& key)
{
    const auto steps = Split(key, ":");
    return steps.size() > 2 && steps[0] == "Commands" ? steps[2] : std::string();
}

/// One entry that is not the same after the way to XML and back.
void NameDifference(const std::string& key, CSequenceFindings& losses)
{
    const std::string text = "The entry \"" + key + "\" has no place in XML.", part = CommandPart(key);
    if (part == "Title") {
        losses.Note("title-made", "The entry \"" + key + "\" becomes the label of a group.");
    } else if (part == "HandlerName") {
        losses.Warning("handler-name", "The entry \"" + key + "\" is kept in another way.");
    } else if (part == "UIPolicy" || part == "Config") {
        losses.Warning("windows-lost", text + " The step shows no windows.");
    } else {
        losses.Error("value-lost", text);
    }
}

/// Compares what was with what a reader of the new text gets. `saveStep`: the number of the step that was added, from
/// 0; -1 for none.
void NameDifferences(CCabView before, CCab after, int saveStep, CSequenceFindings& losses)
{
    if (saveStep >= 0) after.EditCab("Commands").Remove(CabKey(saveStep).c_str());
    bool sourceChanged = false;
    for (const std::string& key : CabDifferences(before, after.View())) {
        if (saveStep >= 0 && IsUnder(key, "Output")) continue;  // named as a whole
        if (IsUnder(key, "Input:PreselectedFolderPath") || IsUnder(key, "Input:PreselectedFilesPaths")) {
            sourceChanged = true;
        } else {
            NameDifference(key, losses);
        }
    }
    if (sourceChanged)
        losses.Warning("source-changed", "The sources are kept in another way; give the run its input.");
}

std::string TitleFor(const json& job, const std::string& path)
{
    const std::string title = JobBytes(job, "title");
    return title.empty() ? TitleFromPath(path) : title;
}

Expected<Converted> ToXml(const SequenceSource& source, const json& job)
{
    if (!source.sequence.IsComplete() || source.sequence.Commands().Size() == 0)
        return Failure("it lacks commands, or one of the parts \"Commands\", \"Input\" and \"Output\".");
    Converted converted;
    Workflow workflow = WorkflowFromSequence(source.sequence);
    workflow.title = TitleFor(job, source.path);
    workflow.description = JobBytes(job, "description");
    const int count = source.sequence.Commands().Size();
    const std::size_t groups = workflow.groups.size();
    AddSaveStep(source.sequence.Output(), workflow, converted.losses);
    auto xml = WriteWorkflow(workflow);
    if (!xml) return Failure(xml.Error());
    const auto again = ParseWorkflow(*xml);
    if (!again) return Failure("the new text cannot be read: " + again.Error());
    NameDifferences(source.sequence.Whole(), CabFromWorkflow(*again), workflow.groups.size() > groups ? count : -1,
                    converted.losses);
    converted.bytes = std::move(*xml);
    return converted;
}

// ---- both

std::string ErrorTexts(const CSequenceFindings& losses)
{
    std::string texts;
    for (const SequenceFinding& loss : losses.All())
        if (loss.severity == Severity::Error) texts += ' ' + loss.text;
    return texts;
}

Expected<Converted> Convert(const SequenceSource& source, SequenceForm to, const json& job)
{
    if (source.form == to)
        return Failure(std::string("it has the form \"") + FormWord(to) + "\" already; copy it instead.");
    return to == SequenceForm::Xml ? ToXml(source, job) : ToHostForm(source, JobBytes(job, "target"));
}

}  // namespace

Expected<json> ConvertSequence(const json& job)
{
    const std::string path = JobBytes(job, "path"), target = JobBytes(job, "target"), word = JobBytes(job, "to");
    const std::string start = "The sequence " + path + " cannot be converted: ";
    if (word != "xml" && word != "host") return Failure(start + "the form must be \"xml\" or \"host\".");
    const auto read = ReadSequenceSource(path);
    if (const auto* problem = std::get_if<SequenceFinding>(&read)) return Failure(FindingSentence(path, *problem));
    const auto& source = std::get<SequenceSource>(read);
    if (std::string problem = TargetProblem({.path = target, .overwrite = JobFlag(job, "overwrite", false)});
        source.form != (word == "xml" ? SequenceForm::Xml : SequenceForm::Host) && !problem.empty())
        return Failure(std::move(problem));
    const auto converted = Convert(source, word == "xml" ? SequenceForm::Xml : SequenceForm::Host, job);
    if (!converted) return Failure(start + converted.Error());
    if (const std::string errors = ErrorTexts(converted->losses);
        !errors.empty() && !JobFlag(job, "allowLoss", false))
        return Failure("The sequence " + path +
                       " was not converted; allow losses if this is to be accepted:" + errors);
    const bool secret = HoldsPasswords(source);
    if (std::string problem = PutSequenceFile({target, JobFlag(job, "overwrite", false), secret}, converted->bytes);
        !problem.empty())
        return Failure(std::move(problem));
    return json{{"path", TextFromBytes(path)},
                {"from", FormWord(source.form)},
                {"to", word},
                {"target", TextFromBytes(target)},
                {"bytes", converted->bytes.size()},
                {"holdsPasswords", secret},
                {"losses", FindingsReport(converted->losses.All())}};
}
