#include "jobs/JobDispatcher.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <optional>
#include <utility>

#include "base/Expected.h"
#include "batchrun/RunDriver.h"
#include "common/Log.h"
#include "engine/InputCollector.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Jobs.h"
#include "jobs/BatchFileJob.h"
#include "jobs/IndexJob.h"
#include "jobs/JobHost.h"
#include "jobs/PlanJob.h"
#include "jobs/SequenceJobs.h"
#include "jobs/TextJob.h"
#include "platform/AtomicFile.h"
#include "protocol/Json.h"

namespace {

// The job of a run whose input files the host hands out.

class CJobInputs final : public CInputSource {
public:
    /// Takes the first input: the host tells the number of files with it. 0 when there is none at all.
    int Total() override;
    std::optional<RunInput> Next() override;

private:
    std::optional<HostJobInput> m_first;
    bool m_ended = false;
};

int CJobInputs::Total()
{
    m_first = NextJobInput();
    m_ended = !m_first;
    return m_first ? m_first->total : 0;
}

std::optional<RunInput> CJobInputs::Next()
{
    if (m_ended) return std::nullopt;
    const auto next = m_first ? std::exchange(m_first, std::nullopt) : NextJobInput();
    m_ended = !next;
    if (!next) return std::nullopt;
    return RunInput{next->path, next->number, next->finalActionOnly};
}

/// Runs as from the environment, and tells the end as such a run does.
void DoRunJob(const RunOrder& order, const JobServices& services) noexcept
{
    CJobInputs inputs;
    CRunDriver driver({.settings = [&] { return DescribedSettings(order.description, order.dryRun, services.log); },
                       .log = services.log,
                       .events = services.events,
                       .host = services.host,
                       .inputs = &inputs});
    driver.Idle();
}

/// Kinds that answer one report and touch no document.
struct AnsweredKind {
    const char* name;
    Expected<Json> (*answer)(const Json& job);
};
constexpr AnsweredKind kAnsweredKinds[] = {{"batch-file", NewBatchFile},
                                           {"sequence-show", ShowSequence},
                                           {"sequence-check", CheckSequence},
                                           {"sequence-new", NewSequence},
                                           {"sequence-convert", ConvertSequence}};

/// The tag becomes part of file names.
std::string TagOf(const std::string& jobText)
{
    const auto job = ParseObject(jobText);
    const std::string run = job ? TextAt(*job, "run") : std::string();
    const bool plain = std::all_of(run.begin(), run.end(), [](unsigned char c) { return std::isalnum(c) != 0; });
    return plain ? run : std::string();
}

void EndOther(const JobEnding& result, const JobServices& services)
{
    if (!result.message.empty()) services.log.NameValue("The job has ended", result.message, 1);
    services.host.CloseHost();
    services.events.RunEnds(result.end, result.message);
}

JobEnding DoAnsweredJob(const AnsweredKind& kind, const Json& job, const JobServices& services)
{
    Expected<Json> answer = Failure("The host does not answer.");
    if (const auto error = CatchHostError([&] { answer = kind.answer(job); }))
        return {RunEnd::NotStarted, BytesAt(job, "path") + ": " + error->text};
    if (!answer) return {RunEnd::NotStarted, answer.Error()};
    services.report(LineOf({{"answer", *answer}}));
    return {};
}

/// What asks one file, or one index: `work` answers why it is not done.
template <class Work>
JobEnding DoJobOnPath(const Json& job, Work work)
{
    std::string problem;
    if (const auto error = CatchHostError([&] { problem = work(); }))
        problem = BytesAt(job, "path") + ": " + error->text;
    if (problem.empty()) return {};
    return {RunEnd::NotStarted, problem};
}

JobEnding DoTextJob(const Json& job, const JobServices& services)
{
    return DoJobOnPath(job, [&] { return ReportPageText(job, services.log, services.report); });
}

JobEnding DoIndexJob(const Json& job, const JobServices& services)
{
    return DoJobOnPath(job, [&] { return CarryOutIndexJob(job, services.report); });
}

/// Tells its end itself, as a run does.
void DoRunOrder(const Json& job, const JobServices& services)
{
    const auto order = RunOrderFrom(job);
    if (!order) return EndOther({RunEnd::NotStarted, order.Error()}, services);
    const CJobOverseer overseer(order->dryRun);
    order->kind == RunOrder::Kind::Plan ? DoPlanJob(*order, services) : DoRunJob(*order, services);
}

void Dispatch(const std::string& jobText, const JobServices& services)
{
    const auto job = ParseObject(jobText);
    if (job && IsRunOrder(*job)) return DoRunOrder(*job, services);
    const CJobOverseer overseer(false);
    if (!job) return EndOther({RunEnd::NotStarted, "The job is no JSON object."}, services);
    const std::string kind = TextAt(*job, "kind");
    for (const AnsweredKind& known : kAnsweredKinds)
        if (kind == known.name) return EndOther(DoAnsweredJob(known, *job, services), services);
    if (kind == "page-text") return EndOther(DoTextJob(*job, services), services);
    if (kind == "index") return EndOther(DoIndexJob(*job, services), services);
    EndOther({RunEnd::NotStarted, "There are no jobs of the kind \"" + kind + "\"."}, services);
}

}  // namespace

WorkDescription JobWork(const std::string& jobText)
{
    const auto object = ParseObject(jobText);
    const auto order = RunOrderFrom(object.value_or(Json::object()));
    return order ? order->description.work : WorkDescription();
}

void DoJob(const std::string& jobText, JobServices services) noexcept
{
    std::string reason = "unknown exception";
    try {
        platform::SetTemporaryTag(TagOf(jobText));
        return Dispatch(jobText, services);
    } catch (const std::exception& exception) {  // host errors are of this kind
        reason = exception.what();
    } catch (...) {  // the reason stays unknown
    }
    services.events.RunEnds(RunEnd::Broken, reason);
}
