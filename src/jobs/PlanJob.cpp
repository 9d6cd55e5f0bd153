#include "jobs/PlanJob.h"

#include <cctype>
#include <set>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "batchrun/RunDriver.h"
#include "common/Log.h"
#include "engine/InputCollector.h"
#include "engine/Work.h"
#include "jobs/PlannedFiles.h"
#include "platform/Files.h"
#include "platform/Programs.h"
#include "protocol/Json.h"

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
        if (!facts.inputsMayBeGone && !platform::NameExists(place))
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

namespace {

/// A folder that could not be asked for its kind was taken as a file: its one line would stand for all of its files.
std::string FolderTakenForFile(const CInputCollector& inputs)
{
    for (std::size_t index = 0; index < inputs.Paths().Size(); ++index)
        if (inputs.IsNamedFile(index) && platform::FolderExists(inputs.Paths().Path(index)))
            return "The folder " + inputs.Paths().Path(index) +
                   " could not be read when the run was planned. Start the run again.";
    return {};
}

/// Stands in for doing the work.
class CPlanner {
public:
    CPlanner(const RunDescription& description, const JobServices& services)
        : m_description(description), m_services(services)
    {
    }

    ExecutionResult Plan(ExecutorSettings settings, CWork& work) const
    {
        CLogWriter& log = m_services.log;
        if (std::string problem = work.Refusal(log); !problem.empty()) return NotStarted(problem);
        if (settings.alternativeInputPath.empty()) settings.furtherInputPaths = work.FurtherInputPlaces();
        const PlanRequest request{std::move(settings), m_description};
        const WorkFacts facts = work.Facts(request);
        if (const std::string problem = ReasonNotToStart(facts, request); !problem.empty()) {
            for (const std::string& line : Split(problem, "\n"))
                log.NameValue("The run is not started", Trim(line), 1);
            return NotStarted(problem);
        }
        auto inputs = CollectInputFiles(request.settings, work, InputExtensions(request.settings, work, log), log);
        if (!inputs) return NotStarted(inputs.Error());
        if (const std::string problem = FolderTakenForFile(*inputs); !problem.empty()) return NotStarted(problem);
        Report(facts, request, std::move(*inputs));
        return {};
    }

private:
    static ExecutionResult NotStarted(const std::string& message)
    {
        ExecutionResult result;
        result.end = ExecutionEnd::NotStarted;
        result.message = message;
        return result;
    }

    /// One line tells of several, since each has its price.
    static constexpr int kInputsInReport = 100;

    /// Where something may be written besides beside the inputs.
    static std::vector<std::string> FoldersOfResults(const WorkFacts& facts, const RunDescription& description)
    {
        std::set<std::string> folders;
        for (const ResultName& result : facts.results)
            if (result.folder) folders.insert(*result.folder);
        if (!description.outputFolder.empty()) folders.insert(description.outputFolder);
        if (WantsFolder(description.finalAction)) folders.insert(description.destination);
        folders.erase("");
        return {folders.begin(), folders.end()};
    }

    /// Whoever takes the run back looks at each of them for each file.
    static constexpr std::size_t kMostNamedInputs = 64;

    /// Beside the files' own folders, which stand for the inputs when these are many.
    static std::vector<std::string> InputsForReach(const RunDescription& description)
    {
        if (description.inputs.size() <= kMostNamedInputs) return description.inputs;
        std::vector<std::string> folders;
        for (const std::string& input : description.inputs)
            if (platform::FolderExists(input)) folders.push_back(input);
        return folders;
    }

    static void AddOtherNames(const CInputCollector& inputs, const WorkFacts& facts,
                              std::vector<std::string>& warnings)
    {
        if (inputs.OtherNames().empty()) return;
        const std::size_t more = inputs.OtherNames().size() - 1;
        const std::string others = more > 0 ? " and " + std::to_string(more) + " more" : "";
        warnings.push_back(inputs.OtherNames().front() + others +
                           ": a second name (hard link) of a file that is an input already, and left out." +
                           (facts.replacesInputs ? " It goes on leading to the document as it was." : ""));
    }

    static std::string ReasonNotToStart(const WorkFacts& facts, const PlanRequest& request)
    {
        std::string problem = SafetyProblem(facts, request);
        const std::string& errors = facts.errors;
        return problem.empty() || errors.empty() ? problem + errors : problem + '\n' + errors;
    }

    void Report(const WorkFacts& facts, const PlanRequest& request, CInputCollector inputs) const
    {
        std::vector<std::string> warnings = SafetyWarnings(facts, request);
        const std::size_t unreadable = inputs.Unreadable().size();
        for (const UnreadableFolder& folder : inputs.Unreadable())
            warnings.push_back("The folder " + folder.path + " cannot be read (" +
                               platform::ErrorText(folder.errorNumber) + "). Its files are left out.");
        for (const std::string& folder : inputs.LeftOut())
            warnings.push_back("The folder " + folder + " is left out of the input because results go there.");
        AddOtherNames(inputs, facts, warnings);

        CPlannedFiles files(std::move(inputs), m_description.minAgeSeconds);
        LogInputCount(files.Count(), m_services.log);
        m_services.events.InputsCounted();
        CTouchedNames names(facts, request.wanted);
        RunReach reach{.inputs = InputsForReach(m_description),
                       .folders = FoldersOfResults(facts, m_description),
                       .anywhere = facts.writesAnywhere};
        const std::size_t named = m_description.inputs.size();
        std::set<std::string> inputFolders;
        std::string told;
        int inputsTold = 0;
        const auto tell = [&] { m_services.report("{\"inputs\":[" + std::exchange(told, {}) + "]}"); };
        files.ForEach(names, [&](const PlannedFile& file) {
            if (named == 0 || named > kMostNamedInputs) inputFolders.insert(FolderOf(file.path));
            told += (told.empty() ? "" : ",") + PlannedFileLine(file);
            if (++inputsTold % kInputsInReport == 0) tell();
        });
        if (!told.empty()) tell();
        reach.inputs.insert(reach.inputs.end(), inputFolders.begin(), inputFolders.end());
        for (std::string& warning : warnings) warning = TextFromBytes(warning);
        const PlanReport plan{.total = static_cast<int>(files.Count()),
                              .oneWorkerReason = TextFromBytes(facts.oneWorkerReason),
                              .tooYoung = static_cast<int>(files.TooYoung()),
                              .unreadableFolders = static_cast<int>(unreadable),
                              .outputsPerFile = facts.resultsPerFile,
                              .reports = facts.reports,
                              .startsPrograms = facts.startsPrograms,
                              .movesInputs = facts.movesInputs,
                              .reach = std::move(reach),
                              .warnings = std::move(warnings)};
        m_services.report(LineOf(Json{{"plan", PlanReportJson(plan)}}));
    }

    const RunDescription& m_description;
    const JobServices& m_services;
};

}  // namespace

void DoPlanJob(const RunOrder& order, const JobServices& services) noexcept
{
    const CPlanner planner(order.description, services);
    CRunDriver driver(
        {.settings = [&] { return DescribedSettings(order.description, order.dryRun, services.log); },
         .log = services.log,
         .events = services.events,
         .host = services.host,
         .use = [&](const RunSettings& settings, CWork& work) { return planner.Plan(settings.execution, work); }});
    driver.Idle();
}
