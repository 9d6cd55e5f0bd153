#include "supervisor/Planning.h"

#include "platform/FileDigest.h"
#include "protocol/Json.h"
#include "protocol/PlanReport.h"
#include "supervisor/HostJob.h"

#include <algorithm>
#include <random>
#include <utility>

namespace {

constexpr std::size_t kRunIdLength = 16;

}  // namespace

std::string NewRunId()
{
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::uniform_int_distribution<std::size_t> place(0, kLetters.size() - 1);
    std::string id;
    while (id.size() < kRunIdLength) id += kLetters[place(random)];
    return id;
}

bool CPlanning::Run(const std::string& manifestPath, const std::string& run, bool dryRun)
{
    std::optional<CManifestWriter> manifest;
    if (!manifestPath.empty()) manifest.emplace(manifestPath);
    CManifestWriter* writer = manifest ? &*manifest : nullptr;
    // Before the host reads it, so that a change while it plans is noticed later.
    m_planned.header.sequenceHash = platform::Sha256OfFile(m_request.sequence);
    HostJobResult host =
        RunHostJob(m_starter, "plan", LineOf(RunOrderJson({RunOrder::Kind::Plan, run, false, m_request})),
                   m_interruptsSeen, m_observer, [&](const std::string& json) { OnReport(json, writer); });
    if (host.job.exit != ExitClass::Fine) {
        m_planned.log = std::move(host.preamble);
        m_planned.log.insert(m_planned.log.end(), host.log.begin(), host.log.end());
        return Fail(host.job.exit, std::move(host.job.message));
    }
    if (!m_refusal.empty()) return Fail(ExitClass::Broken, m_refusal);
    if (m_disordered || m_planned.summary.json.empty() || m_files != m_planned.summary.total)
        return Fail(ExitClass::Broken, "The host's plan is incomplete.");
    PlanSummary& summary = m_planned.summary;
    ManifestHeader& header = m_planned.header;
    summary.run = run;
    header.order = {RunOrder::Kind::Run, run, dryRun, m_request};
    header.total = summary.total;
    header.bytes = summary.bytes;
    header.oneWorker = summary.oneWorker;
    header.oneWorkerReason = summary.oneWorkerReason;
    header.preamble = std::move(host.preamble);
    header.epilogue = std::move(host.log);
    if (!writer) return true;
    const platform::FileResult written = writer->Finish(header);
    if (written) return true;
    return Fail(ExitClass::Broken, "The manifest " + manifestPath + " cannot be written (" +
                                       platform::ErrorText(written.errorNumber) + ").");
}

bool CPlanning::Fail(ExitClass exit, std::string message)
{
    m_failure = {exit, std::move(message)};
    return false;
}

void CPlanning::OnReport(const std::string& json, CManifestWriter* manifest)
{
    const Json report = ParseObject(json).value_or(Json::object());
    PlanSummary& summary = m_planned.summary;
    if (report.contains("input")) {
        const auto file = PlannedFileFrom(ObjectAt(report, "input"));
        m_disordered = m_disordered || !file || file->number != m_files + 1;
        if (m_disordered) return;
        ++m_files;
        summary.bytes += file->size;
        if (manifest) manifest->Add(*file);
        if (m_guard && m_refusal.empty()) m_refusal = m_guard->ProblemWithInput(*file);
        m_observer.FilePlanned(*file);
    } else if (report.contains("plan")) {
        PlanReport plan = PlanReportFrom(ObjectAt(report, "plan"));
        summary.json = json;
        summary.total = plan.total;
        summary.oneWorker = !plan.oneWorkerReason.empty();
        summary.oneWorkerReason = std::move(plan.oneWorkerReason);
        summary.tooYoung = plan.tooYoung;
        summary.warnings = std::move(plan.warnings);
        m_planned.header.unreadableFolders = plan.unreadableFolders;
        m_planned.header.outputsPerFile = plan.outputsPerFile;
    }
}
