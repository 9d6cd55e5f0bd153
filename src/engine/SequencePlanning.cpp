#include "engine/SequencePlanning.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string_view>
#include <variant>

#include "engine/OutputSaving.h"
#include "hostcalls/Commands.h"
#include "platform/Files.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"
#include "sequence/SequenceChecks.h"

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
    step.startsPrograms = description.startsPrograms || description.maker == StepMaker::Other;
    if (description.saves) step.save = SaveStepFacts::Read(read.parameters);
    if (description.copies) step.copies = description.copies(read.parameters);
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

namespace {

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

std::string UnavailableStep(const SequenceFacts& sequence, const RunDescription& wanted)
{
    if (wanted.skipUnavailable || wanted.force) return {};
    for (const StepFacts& step : sequence.steps)
        if (!step.available)
            return "The step " + Quoted(step.handler) +
                   " is not available in this host. Take it out of the sequence, or leave it out of the run with "
                   "--skip-unavailable; the files then count as incomplete.";
    return {};
}

/// For a run that names no output folder.
std::string OwnFolderProblem(const OutputSettings& output)
{
    if (output.kind == kOutputAskUser)
        return "The sequence asks for its output folder, and nobody can be asked. Name a folder with --output.";
    // A sequence that names a destination is sent into the folder of each input.
    if (output.kind != kOutputFolder || output.namesDestination) return {};
    if (!output.selectedFolder)
        return "The sequence saves into a folder but does not say which. Name one with --output.";
    if (platform::FolderExists(*output.selectedFolder)) return {};
    return "The sequence's output folder " + Quoted(*output.selectedFolder) +
           " does not exist. Create it, or name another one with --output.";
}

/// Whether the engine's own save would write over the input.
bool OutputReplacesInput(const OutputSettings& output)
{
    return output.kind == kOutputInputFolder && !output.dontOverwrite && output.insertBefore.empty() &&
           output.insertAfter.empty() && !output.handlerId;
}

bool ReplacesInputs(const SequenceFacts& sequence)
{
    return OutputReplacesInput(sequence.output) ||
           std::any_of(sequence.steps.begin(), sequence.steps.end(), [&](const StepFacts& step) {
               return step.save && step.available && SavesInPlace(*step.save, sequence.hostMajor);
           });
}

bool IsWordCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '$'; }

/// Also true for a mention in a comment: one worker too few does no harm.
bool MentionsWord(std::string_view text, std::string_view word)
{
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
        const bool starts = at == 0 || !IsWordCharacter(text[at - 1]);
        const std::size_t end = at + word.size();
        if (starts && (end == text.size() || !IsWordCharacter(text[end]))) return true;
    }
    return false;
}

std::string OneWorkerReason(const StepFacts& step)
{
    if (!step.available) return {};
    const std::string name = "The step " + Quoted(step.handler);
    if (step.shared == SharedWork::Index) return name + " works on an index that all files share.";
    if (step.maker == StepMaker::Other && step.sequenceCallbacks)
        return name + " of another maker wants to see the whole sequence.";
    if (MentionsWord(step.script, "global")) return name + " keeps values from file to file (\"global\").";
    return {};
}

std::string OneWorkerReason(const SequenceFacts& sequence)
{
    for (const StepFacts& step : sequence.steps)
        if (std::string reason = OneWorkerReason(step); !reason.empty()) return reason;
    return {};
}

std::vector<std::string> UnavailableSteps(const SequenceFacts& sequence)
{
    std::vector<std::string> warnings;
    for (const StepFacts& step : sequence.steps)
        if (!step.available)
            warnings.push_back("The step " + Quoted(step.handler) +
                               (step.protects ? " is not available, and without its protection no file will be saved."
                                              : " is not available and is left out; no file will count as saved."));
    return warnings;
}

/// Where the host sends results when the run names a folder that is there.
std::optional<std::string> GivenFolder(const PlanRequest& request)
{
    const std::string& folder = request.settings.alternativeOutputPath;
    return !folder.empty() && platform::FolderExists(folder) ? std::optional(folder) : std::nullopt;
}

/// What the engine saves; nothing when it saves nothing beside the input.
std::optional<ResultName> OutputName(const SequenceFacts& sequence, const PlanRequest& request)
{
    const OutputSettings& output = sequence.output;
    ResultName result{.before = output.insertBefore, .after = output.insertAfter};
    if (output.kind == kOutputInputFolder) return result;
    if (output.kind != kOutputAskUser && output.kind != kOutputFolder) return std::nullopt;
    const bool redirected = output.namesDestination && sequence.hostMajor >= kFirstMajorWithSaveStep;
    result.folder = GivenFolder(request);
    if (!result.folder && !redirected) result.folder = output.selectedFolder;
    return result;
}

ResultName SavedName(const SaveStepFacts& save, const SequenceFacts& sequence, const PlanRequest& request)
{
    const bool redirected = save.namesDestination && sequence.hostMajor >= kFirstMajorWithSaveStep;
    return {redirected ? GivenFolder(request) : save.folder, save.before, save.after};
}

std::vector<ResultName> ResultNames(const SequenceFacts& sequence, const PlanRequest& request)
{
    std::vector<ResultName> results;
    if (auto output = OutputName(sequence, request)) results.push_back(std::move(*output));
    for (const StepFacts& step : sequence.steps)
        if (step.available && step.save) results.push_back(SavedName(*step.save, sequence, request));
    for (const StepFacts& step : sequence.steps)
        if (step.available)
            for (const CopyPlace& copy : step.copies) results.push_back({copy.folder, copy.before, copy.after});
    return results;
}

}  // namespace

WorkFacts FactsOfSequence(const SequenceFacts& sequence, const PlanRequest& request)
{
    WorkFacts facts{.noun = "sequence",
                    .objection = UnavailableStep(sequence, request.wanted),
                    .usesOutputFolder = sequence.output.kind != kOutputInputFolder,
                    .replacesInputs = ReplacesInputs(sequence),
                    .resultsPerFile = ResultsPerFile(sequence),
                    .results = ResultNames(sequence, request),
                    .oneWorkerReason = OneWorkerReason(sequence),
                    .warnings = UnavailableSteps(sequence),
                    .howToSave = "Add a save step to the sequence",
                    .howToSpareInputs = "Give the save step a destination"};
    if (facts.objection.empty() && request.settings.alternativeOutputPath.empty())
        facts.objection = OwnFolderProblem(sequence.output);
    if (sequence.inputKind != kInputFiles && sequence.inputKind != kInputFolder)
        facts.noInputs = "The sequence asks for its input files, and nobody can be asked.";
    facts.writesAnywhere = std::ranges::any_of(
        sequence.steps, [](const StepFacts& step) { return step.available && step.maker == StepMaker::Other; });
    facts.reports = std::ranges::any_of(
        sequence.steps, [](const StepFacts& step) { return step.available && step.shared == SharedWork::Report; });
    facts.startsPrograms = std::ranges::any_of(
        sequence.steps, [](const StepFacts& step) { return step.available && step.startsPrograms; });
    return facts;
}

namespace {

constexpr std::size_t kMostLines = 20;

/// What planning asks about in other ways, with options of their own.
bool IsAskedOtherwise(std::string_view code)
{
    constexpr std::string_view kCodes[] = {"step-not-available", "saves-nothing",    "no-source",
                                           "unknown-input",      "no-output-folder", "output-folder-missing"};
    return std::find(std::begin(kCodes), std::end(kCodes), code) != std::end(kCodes);
}

std::string ErrorLine(const SequenceFinding& finding)
{
    const std::string step = finding.step > 0 ? "step " + std::to_string(finding.step) + ": " : "";
    return "\n  " + step + finding.text;
}

CheckedRun PlannedRun(const PlanRequest& request)
{
    return {.hasInput = !request.settings.alternativeInputPath.empty() || !request.settings.furtherInputPaths.empty(),
            .hasOutputFolder = !request.settings.alternativeOutputPath.empty(),
            .takesInputAway = TakesInputAway(request.wanted.finalAction)};
}

std::vector<SequenceFinding> FindingsOf(const std::string& path, const PlanRequest& request)
{
    const auto read = ReadSequenceSource(path);
    if (const auto* problem = std::get_if<SequenceFinding>(&read)) return {*problem};
    return CheckSource(std::get<SequenceSource>(read), PlannedRun(request));
}

}  // namespace

std::string SequenceErrors(const std::string& path, const PlanRequest& request)
{
    if (request.wanted.force) return {};
    std::string lines;
    std::size_t count = 0;
    for (const SequenceFinding& finding : FindingsOf(path, request)) {
        if (finding.severity != SequenceFinding::Severity::Error || IsAskedOtherwise(finding.code)) continue;
        if (++count <= kMostLines) lines += ErrorLine(finding);
    }
    if (count == 0) return {};
    if (count > kMostLines) lines += "\n  ... and " + std::to_string(count - kMostLines) + " more";
    return "The sequence has errors; correct them, or start the run nevertheless with --force:" + lines;
}
