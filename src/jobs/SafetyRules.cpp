#include "jobs/SafetyRules.h"

#include <cctype>

#include "platform/Files.h"
#include "platform/Programs.h"

namespace {

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

std::string The(const WorkFacts& facts) { return "The " + facts.noun; }

/// "Do this, do that", with the work's own advice in front when it has one.
std::string WithAdvice(const std::string& advice, const char* verb, const char* rest)
{
    const std::string start =
        advice.empty() ? std::string(1, static_cast<char>(std::toupper(*verb))) + (verb + 1) : advice + ", " + verb;
    return ' ' + start + rest;
}

std::string NothingSaved(const WorkFacts& facts, const PlanRequest& request)
{
    if (request.wanted.allowNoOutput || facts.resultsPerFile > 0) return {};
    if (!TakesInputAway(request.wanted.finalAction)) return {};
    return The(facts) + " saves nothing, but the final action moves or deletes the inputs." +
           WithAdvice(facts.howToSave, "choose",
                      " another final action, or say that this is what you want with --allow-no-output.");
}

std::string InPlaceSave(const WorkFacts& facts, const PlanRequest& request)
{
    if (request.wanted.allowInPlace || request.settings.alternativeOutputPath.empty()) return {};
    if (!facts.replacesInputs) return {};
    return The(facts) +
           " saves each document where it came from, so the inputs would be replaced although an output folder is "
           "given (--output)." +
           WithAdvice(facts.howToSpareInputs, "leave",
                      " out --output, or say that this is what you want with --allow-in-place.");
}

std::string MissingInput(const WorkFacts& facts, const PlanRequest& request)
{
    std::vector<std::string> places = request.settings.furtherInputPaths;
    if (!request.settings.alternativeInputPath.empty()) places.push_back(request.settings.alternativeInputPath);
    for (const std::string& place : places)
        if (!platform::NameExists(place))
            return "There is no folder or file " + Quoted(place) +
                   " to take inputs from. Name another one with --input.";
    if (!places.empty() || facts.noInputs.empty()) return {};
    return facts.noInputs + " Name a folder or a file with --input.";
}

std::string MissingFolder(const char* what, const std::string& folder, const char* option)
{
    if (platform::FolderExists(folder)) return {};
    return std::string("The ") + what + " " + Quoted(folder) +
           " does not exist. Create it, or name another one with " + option + ".";
}

std::string OutputFolderProblem(const WorkFacts&, const PlanRequest& request)
{
    const std::string& given = request.settings.alternativeOutputPath;
    return given.empty() ? std::string() : MissingFolder("output folder", given, "--output");
}

std::string DestinationProblem(const PlanRequest& request)
{
    const FinalActionFacts& action = FactsOf(request.wanted.finalAction);
    const std::string& destination = request.wanted.destination;
    if (action.destination != Destination::None && destination.empty())
        return "The final action needs a destination. Name it with --destination, or choose another final action.";
    if (action.destination == Destination::Program && !platform::ProgramMayExist(destination))
        return "There is no program " + Quoted(destination) +
               " to start on each input. Install it, or name another one with --destination.";
    return action.destination == Destination::Folder
               ? MissingFolder("destination folder", destination, "--destination")
               : std::string();
}

}  // namespace

std::string SafetyProblem(const WorkFacts& facts, const PlanRequest& request)
{
    if (!facts.objection.empty()) return facts.objection;
    for (const auto& rule : {MissingInput, OutputFolderProblem, NothingSaved, InPlaceSave})
        if (std::string problem = rule(facts, request); !problem.empty()) return problem;
    return DestinationProblem(request);
}

std::vector<std::string> SafetyWarnings(const WorkFacts& facts, const PlanRequest& request)
{
    std::vector<std::string> warnings = facts.warnings;
    const bool saves = facts.resultsPerFile > 0;
    if (!saves) warnings.push_back(The(facts) + " saves nothing.");
    if (!(saves && facts.usesOutputFolder) && !request.settings.alternativeOutputPath.empty())
        warnings.push_back(The(facts) + " does not use the output folder that was given.");
    return warnings;
}
