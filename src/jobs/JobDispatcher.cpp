#include "jobs/JobDispatcher.h"

#include "base/Expected.h"
#include "common/Log.h"
#include "hostcalls/HostFrame.h"
#include "jobs/JobOverseer.h"
#include "jobs/JobSettings.h"
#include "jobs/PlanJob.h"
#include "jobs/RunJob.h"
#include "jobs/SequenceJobs.h"
#include "platform/TemporaryNames.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

/// Kinds that end as a run does: they log and tell their end themselves.
struct RunKind {
    const char* name;
    void (*conduct)(const json& job, const JobServices& services) noexcept;
};
constexpr RunKind kRunKinds[] = {{"run", DoRunJob}, {"plan", DoPlanJob}};

/// Kinds that answer one report and touch no document.
struct SequenceKind {
    const char* name;
    Expected<json> (*answer)(const json& job);
};
constexpr SequenceKind kSequenceKinds[] = {{"sequence-show", ShowSequence},
                                           {"sequence-check", CheckSequence},
                                           {"sequence-new", NewSequence},
                                           {"sequence-convert", ConvertSequence}};

json Parsed(const std::string& jobText) { return json::parse(jobText, nullptr, false); }

/// The tag becomes part of file names.
std::string TagOf(const json& job)
{
    const std::string run = JobBytes(job, "run");
    const bool plain = std::all_of(run.begin(), run.end(), [](unsigned char c) { return std::isalnum(c) != 0; });
    return plain ? run : std::string();
}

void EndOther(const JobEnding& result, const JobServices& services)
{
    if (!result.message.empty()) services.log.NameValue("The job has ended", result.message, 1);
    services.host.CloseHost();
    services.events.RunEnds(result.end, result.message);
}

JobEnding DoSequenceJob(const SequenceKind& kind, const json& job, const JobServices& services)
{
    Expected<json> answer = Failure("The host does not answer.");
    if (const auto error = CatchHostError([&] { answer = kind.answer(job); }))
        return {RunEnd::NotStarted, "The sequence " + JobBytes(job, "path") + " cannot be worked on: " + error->text};
    if (!answer) return {RunEnd::NotStarted, answer.Error()};
    services.report(json{{"sequence", *answer}}.dump());
    return {};
}

void Dispatch(const json& job, const JobServices& services)
{
    if (!job.is_object()) return EndOther({RunEnd::NotStarted, "The job is no JSON object."}, services);
    const std::string kind = JobBytes(job, "kind");
    for (const RunKind& known : kRunKinds)
        if (kind == known.name) return known.conduct(job, services);
    for (const SequenceKind& known : kSequenceKinds)
        if (kind == known.name) return EndOther(DoSequenceJob(known, job, services), services);
    EndOther({RunEnd::NotStarted, "There are no jobs of the kind \"" + kind + "\"."}, services);
}

}  // namespace

EnvironmentReader JobEnvironment(const std::string& jobText) { return EnvironmentOf(Parsed(jobText)); }

void DoJob(const std::string& jobText, JobServices services) noexcept
{
    std::string reason = "unknown exception";
    try {
        const json job = Parsed(jobText);
        platform::SetTemporaryTag(TagOf(job));
        const CJobOverseer overseer(JobFlag(job, "dryRun", false));
        return Dispatch(job, services);
    } catch (const std::exception& exception) {  // host errors are of this kind
        reason = exception.what();
    } catch (...) {  // the reason stays unknown
    }
    services.events.RunEnds(RunEnd::Broken, reason);
}
