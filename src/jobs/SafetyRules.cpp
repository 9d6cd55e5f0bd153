#include "jobs/SafetyRules.h"

#include "platform/Files.h"
#include "platform/Programs.h"
#include "sequence/Sequence.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace {

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

std::string UnavailableStep(const SequenceFacts& facts, const PlanRequest& request)
{
    if (request.permitted.skipUnavailable || request.permitted.force) return {};
    for (const StepFacts& step : facts.steps)
        if (!step.available)
            return "The step " + Quoted(step.handler) +
                   " is not available in this host. Take it out of the sequence, or leave it out of the run with "
                   "--skip-unavailable; the files then count as incomplete.";
    return {};
}

std::string NothingSaved(const SequenceFacts& facts, const PlanRequest& request)
{
    if (request.permitted.allowNoOutput || SavesSomething(facts)) return {};
    if (!TakesInputAway(request.settings.finalAction)) return {};
    return "The sequence saves nothing, but the final action moves or deletes the inputs. Add a save step to the "
           "sequence, choose another final action, or say that this is what you want with --allow-no-output.";
}

/// Whether the engine's own save would write over the input.
bool OutputReplacesInput(const OutputSettings& output)
{
    return output.kind == kOutputInputFolder && !output.dontOverwrite && output.insertBefore.empty() &&
           output.insertAfter.empty() && !output.handlerId;
}

std::string InPlaceSave(const SequenceFacts& facts, const PlanRequest& request)
{
    if (request.permitted.allowInPlace || request.settings.execution.alternativeOutputPath.empty()) return {};
    const bool inPlace = OutputReplacesInput(facts.output) ||
                         std::any_of(facts.steps.begin(), facts.steps.end(), [&](const StepFacts& step) {
                             return step.save && step.available && SavesInPlace(*step.save, facts.hostMajor);
                         });
    if (!inPlace) return {};
    return "The sequence saves each document where it came from, so the inputs would be replaced although an output "
           "folder is given (--output). Give the save step a destination, leave out --output, or say that this is "
           "what you want with --allow-in-place.";
}

std::string MissingInput(const SequenceFacts& facts, const PlanRequest& request)
{
    std::vector<std::string> places = request.settings.execution.furtherInputPaths;
    if (!request.settings.execution.alternativeInputPath.empty())
        places.push_back(request.settings.execution.alternativeInputPath);
    for (const std::string& place : places)
        if (!platform::NameExists(place))
            return "There is no folder or file " + Quoted(place) +
                   " to take inputs from. Name another one with --input.";
    if (!places.empty()) return {};
    if (facts.inputKind == kInputFiles || facts.inputKind == kInputFolder) return {};
    return "The sequence asks for its input files, and nobody can be asked. Name a folder or a file with --input.";
}

std::string MissingFolder(const char* what, const std::string& folder, const char* option)
{
    if (platform::FolderExists(folder)) return {};
    return std::string("The ") + what + " " + Quoted(folder) +
           " does not exist. Create it, or name another one with " + option + ".";
}

std::string OutputFolderProblem(const SequenceFacts& facts, const PlanRequest& request)
{
    const std::string& given = request.settings.execution.alternativeOutputPath;
    if (!given.empty()) return MissingFolder("output folder", given, "--output");
    if (facts.output.kind == kOutputAskUser)
        return "The sequence asks for its output folder, and nobody can be asked. Name a folder with --output.";
    if (facts.output.kind != kOutputFolder) return {};
    // A sequence that names a destination is sent into the folder of each input.
    if (facts.output.namesDestination) return {};
    if (!facts.output.selectedFolder)
        return "The sequence saves into a folder but does not say which. Name one with --output.";
    return MissingFolder("sequence's output folder", *facts.output.selectedFolder, "--output");
}

std::string DestinationProblem(const PlanRequest& request)
{
    const FinalActionFacts& action = FactsOf(request.settings.finalAction);
    const std::string& destination = request.settings.destination;
    if (action.destination != Destination::None && destination.empty())
        return "The final action needs a destination. Name it with --destination, or choose another final action.";
    if (action.destination == Destination::Program && !platform::ProgramMayExist(destination))
        return "There is no program " + Quoted(destination) +
               " to start on each input. Install it, or name another one with --destination.";
    return action.destination == Destination::Folder ? MissingFolder("destination folder", destination, "--destination") : std::string();
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
    if (step.shared == SharedWork::Report) return name + " writes one report on all files.";
    if (step.maker == StepMaker::Other && step.sequenceCallbacks)
        return name + " of another maker wants to see the whole sequence.";
    if (MentionsWord(step.script, "global")) return name + " keeps values from file to file (\"global\").";
    return {};
}

}  // namespace

std::string SafetyProblem(const SequenceFacts& facts, const PlanRequest& request)
{
    for (const auto& rule : {UnavailableStep, MissingInput, OutputFolderProblem, NothingSaved, InPlaceSave})
        if (std::string problem = rule(facts, request); !problem.empty()) return problem;
    return DestinationProblem(request);
}

std::vector<std::string> SafetyWarnings(const SequenceFacts& facts, const PlanRequest& request)
{
    std::vector<std::string> warnings;
    for (const StepFacts& step : facts.steps)
        if (!step.available)
            warnings.push_back("The step " + Quoted(step.handler) +
                               (step.protects ? " is not available, and without its protection no file will be saved."
                                              : " is not available and is left out; no file will count as saved."));
    if (!SavesSomething(facts)) warnings.push_back("The sequence saves nothing.");
    const bool outputUnused = facts.output.kind == kOutputInputFolder || !SavesSomething(facts);
    if (outputUnused && !request.settings.execution.alternativeOutputPath.empty())
        warnings.push_back("The sequence does not use the output folder that was given.");
    return warnings;
}

std::string OneWorkerReason(const SequenceFacts& facts)
{
    for (const StepFacts& step : facts.steps)
        if (std::string reason = OneWorkerReason(step); !reason.empty()) return reason;
    return {};
}
