#include "jobs/PlanJob.h"

#include "base/Text.h"
#include "batchrun/RunDriver.h"
#include "common/Log.h"
#include "engine/InputFiles.h"
#include "engine/Work.h"
#include "jobs/PlannedFiles.h"
#include "jobs/SafetyRules.h"
#include "platform/Files.h"
#include "protocol/Json.h"
#include "protocol/PlanReport.h"

namespace {

/// A folder that could not be asked for its kind was taken as a file: its one line would stand for all of its files.
std::string FolderTakenForFile(const CInputCollector& inputs)
{
    for (const std::string& path : inputs.NamedFiles())
        if (platform::FolderExists(path))
            return "The folder " + path + " could not be read when the run was planned. Start the run again.";
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

        CPlannedFiles files(std::move(inputs), m_description.minAgeSeconds);
        LogInputCount(files.Count(), m_services.log);
        m_services.events.InputsCounted();
        CTouchedNames names(facts, request.wanted);
        files.ForEach(names, [this](const PlannedFile& file) {
            m_services.report(LineOf(Json{{"input", PlannedFileJson(file)}}));
        });
        for (std::string& warning : warnings) warning = TextFromBytes(warning);
        const PlanReport plan{.total = static_cast<int>(files.Count()),
                              .oneWorkerReason = TextFromBytes(facts.oneWorkerReason),
                              .tooYoung = static_cast<int>(files.TooYoung()),
                              .unreadableFolders = static_cast<int>(unreadable),
                              .outputsPerFile = facts.resultsPerFile,
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
